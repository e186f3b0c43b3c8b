#ifndef HELPERS_X11_PICTURE_H
#define HELPERS_X11_PICTURE_H

#include <cairo.h>
#include <string>

/// What the window shows, from top to bottom. It says how much the user did, and never what.
struct Picture {
  std::string request;   ///< what to do
  std::string remark;    ///< why that takes longer than usual; may be empty
  int percent = 0;       ///< of the bar
  std::string progress;  ///< the same in words
  std::string ending;    ///< what ends the draw

  bool operator==(const Picture&) const = default;
};

/// Paints the picture on an area of that size, in pixels. `fontSize` is the size of letters that is wished
/// for. They are smaller where the picture would not fit.
void Paint(cairo_t* context, const Picture& picture, double width, double height, double fontSize);

/// The height that the picture needs with this width and letters of this size.
double MeasureHeight(const Picture& picture, double width, double fontSize);

#endif
