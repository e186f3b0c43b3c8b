#include "helpers/x11/picture.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <vector>

namespace {

struct Colour {  // up to 255
  double red;
  double green;
  double blue;
};

// Dark on light: the texts have a contrast of 7 to 1 or more.
constexpr Colour kBackground = {245, 245, 245};
constexpr Colour kText = {25, 25, 25};
constexpr Colour kSmallText = {69, 69, 69};
constexpr Colour kEmptyBar = {255, 255, 255};
constexpr Colour kFullBar = {25, 94, 181};

constexpr double kSmallestFont = 5;

void Use(cairo_t* context, const Colour& colour) {
  cairo_set_source_rgb(context, colour.red / 255, colour.green / 255, colour.blue / 255);
}

double MeasureText(cairo_t* context, const std::string& text) {
  cairo_text_extents_t extents;
  cairo_text_extents(context, text.c_str(), &extents);
  return extents.x_advance;
}

std::vector<std::string> Wrap(cairo_t* context, const std::string& text, double width) {
  std::vector<std::string> lines;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const std::string longer = lines.empty() ? word : lines.back() + ' ' + word;
    if (!lines.empty() && MeasureText(context, longer) <= width) {
      lines.back() = longer;
    } else {
      lines.push_back(word);
    }
  }
  return lines;
}

// The parts of a picture, stacked vertically. Measuring and painting use the same layout.
class Column {
 public:
  Column(cairo_t* where, double areaWidth, double size, bool isPainted)
      : context(where), width(areaWidth - 2 * size), fontSize(size), paints(isPainted) {
    cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_NORMAL);
  }

  void AddText(const std::string& text, double relativeSize, const Colour& colour) {
    if (text.empty()) return;
    Separate();
    cairo_set_font_size(context, fontSize * relativeSize);
    cairo_font_extents_t font;
    cairo_font_extents(context, &font);
    for (const std::string& line : Wrap(context, text, width)) {
      widest = std::max(widest, MeasureText(context, line));
      if (paints) PaintLine(line, top + font.ascent, colour);
      top += std::max(font.height, font.ascent + font.descent);
    }
  }

  void AddBar(int percent) {
    Separate();
    const double height = 1.4 * fontSize;
    if (paints) PaintBar(percent, height);
    top += height;
  }

  double Height() const { return top + fontSize; }
  bool IsTooWide() const { return widest > width; }

 private:
  void Separate() { top += top == 0 ? fontSize : 0.7 * fontSize; }

  void PaintLine(const std::string& line, double base, const Colour& colour) {
    Use(context, colour);
    cairo_move_to(context, fontSize, base);
    cairo_show_text(context, line.c_str());
  }

  void PaintBar(int percent, double height) {
    const double line = std::max(1.0, fontSize / 12);
    Use(context, kEmptyBar);
    cairo_rectangle(context, fontSize, top, width, height);
    cairo_fill(context);
    Use(context, kFullBar);
    cairo_rectangle(context, fontSize, top, width * percent / 100, height);
    cairo_fill(context);
    Use(context, kText);
    cairo_set_line_width(context, line);
    cairo_rectangle(context, fontSize + line / 2, top + line / 2, width - line, height - line);
    cairo_stroke(context);
  }

  cairo_t* context;
  double width;
  double fontSize;
  bool paints;
  double top = 0;
  double widest = 0;
};

Column LayOut(cairo_t* context, const Picture& picture, double width, double fontSize,
              bool isPainted) {
  Column column(context, width, fontSize, isPainted);
  column.AddText(picture.request, 1, kText);
  column.AddText(picture.remark, 1, kText);
  column.AddBar(picture.percent);
  column.AddText(picture.progress, 1, kText);
  column.AddText(picture.ending, 0.9, kSmallText);
  return column;
}

bool Fits(cairo_t* context, const Picture& picture, double width, double height, double size) {
  const Column column = LayOut(context, picture, width, size, false);
  return column.Height() <= height && !column.IsTooWide();
}

double FitFont(cairo_t* context, const Picture& picture, double width, double height, double size) {
  while (size > kSmallestFont && !Fits(context, picture, width, height, size)) size *= 0.95;
  return size;
}

}  // namespace

void Paint(cairo_t* context, const Picture& picture, double width, double height, double fontSize) {
  const double size = FitFont(context, picture, width, height, fontSize);
  const double free = height - LayOut(context, picture, width, size, false).Height();
  Use(context, kBackground);
  cairo_paint(context);
  cairo_save(context);
  cairo_translate(context, 0, std::max(0.0, free / 2));
  LayOut(context, picture, width, size, true);
  cairo_restore(context);
}

double MeasureHeight(const Picture& picture, double width, double fontSize) {
  const std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1), cairo_surface_destroy);
  const std::unique_ptr<cairo_t, void (*)(cairo_t*)> context(cairo_create(surface.get()),
                                                             cairo_destroy);
  return LayOut(context.get(), picture, width, fontSize, false).Height();
}
