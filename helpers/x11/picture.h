#ifndef HELPERS_X11_PICTURE_H
#define HELPERS_X11_PICTURE_H

#include <cairo.h>
#include <string>

/// What the window shows, from top to bottom. It shows how much has been gathered, and never which keys or motions.
struct Picture {
  std::string request;   ///< what to do
  std::string remark;    ///< why that takes longer than usual; may be empty
  int percent = 0;       ///< of the bar
  std::string progress;  ///< the same as text
  std::string ending;    ///< how to cancel

  bool operator==(const Picture&) const = default;
};

/// Paints the picture on an area of that size, in pixels. `fontSize` is the desired size of letters. They are made
/// smaller if the picture would not fit.
void Paint(cairo_t* context, const Picture& picture, double width, double height, double fontSize);

/// Returns the height that the picture needs with this width and this size of letters.
double MeasureHeight(const Picture& picture, double width, double fontSize);

#endif
