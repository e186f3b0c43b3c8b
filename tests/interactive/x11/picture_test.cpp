// What the window of "unixx11" shows, pixel by pixel. The font is that of the machine, so the cases ask Cairo
// for its sizes.

#include "helpers/x11/picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gmock/gmock.h>
#include <memory>

namespace {

using Pixel = std::array<int, 3>;  // red, green, blue
constexpr Pixel kBackground = {245, 245, 245};
constexpr Pixel kText = {25, 25, 25};
constexpr Pixel kSmallText = {69, 69, 69};
constexpr Pixel kEmptyBar = {255, 255, 255};
constexpr Pixel kFullBar = {25, 94, 181};

constexpr int kWidth = 800;
constexpr int kFont = 40;
const Picture kPicture = {"Hit", "", 50, "Half", "Halt"};

class Image {
 public:
  Image(int width, int height)
      : surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height),
                cairo_surface_destroy),
        context(cairo_create(surface.get()), cairo_destroy) {
    cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_NORMAL);
  }
  Image(const Picture& picture, int width, int height, double font = kFont) : Image(width, height) {
    Paint(context.get(), picture, width, height, font);
    cairo_surface_flush(surface.get());
  }

  int Height() const { return cairo_image_surface_get_height(surface.get()); }
  int Width() const { return cairo_image_surface_get_width(surface.get()); }

  Pixel At(int x, int y) const {
    const unsigned char* const row = cairo_image_surface_get_data(surface.get()) +
                                     y * cairo_image_surface_get_stride(surface.get());
    std::uint32_t value = 0;
    std::memcpy(&value, row + 4 * x, sizeof value);
    return {static_cast<int>(value >> 16 & 255), static_cast<int>(value >> 8 & 255),
            static_cast<int>(value & 255)};
  }

  // The smallest rectangle with all the ink in these rows, and its darkest pixel.
  struct Ink {
    int left, right, top, bottom;  // `right` and `bottom` are the first column and row without ink
    Pixel darkest;
  };
  Ink InkIn(int from, int to) const {
    Ink ink = {Width(), 0, to, from, kBackground};
    for (int y = from; y < to; ++y) {
      for (int x = 0; x < Width(); ++x) {
        const Pixel pixel = At(x, y);
        if (pixel == kBackground) continue;
        ink = {std::min(ink.left, x), std::max(ink.right, x + 1), std::min(ink.top, y),
               std::max(ink.bottom, y + 1), std::min(ink.darkest, pixel)};
      }
    }
    return ink;
  }

  cairo_font_extents_t MeasureFont(double font) const {
    cairo_font_extents_t extents;
    cairo_set_font_size(context.get(), font);
    cairo_font_extents(context.get(), &extents);
    return extents;
  }
  cairo_text_extents_t Measure(const std::string& text, double font) const {
    cairo_text_extents_t extents;
    cairo_set_font_size(context.get(), font);
    cairo_text_extents(context.get(), text.c_str(), &extents);
    return extents;
  }

 private:
  std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> surface;
  std::unique_ptr<cairo_t, void (*)(cairo_t*)> context;
};

const Image& Ruler() {
  static const Image image(1, 1);
  return image;
}

double LineHeight(double font = kFont) {
  const cairo_font_extents_t extents = Ruler().MeasureFont(font);
  return std::max(extents.height, extents.ascent + extents.descent);
}

constexpr double kGap = 0.7 * kFont;
constexpr double kBarHeight = 1.4 * kFont;
double BarTop() { return kFont + LineHeight() + kGap; }
double ProgressTop() { return BarTop() + kBarHeight + kGap; }
double EndingTop() { return ProgressTop() + LineHeight() + kGap; }
int NeededHeight() { return static_cast<int>(std::ceil(MeasureHeight(kPicture, kWidth, kFont))); }

Image Usual() { return Image(kPicture, kWidth, NeededHeight()); }

void ExpectText(const Image& image, const std::string& text, double top, double font,
                const Pixel& colour) {
  const Image::Ink ink =
      image.InkIn(static_cast<int>(top), static_cast<int>(top + LineHeight(font)));
  const cairo_text_extents_t extents = Ruler().Measure(text, font);
  EXPECT_NEAR(kFont + extents.x_bearing, ink.left, 1.5) << text;
  EXPECT_NEAR(kFont + extents.x_bearing + extents.width, ink.right, 1.5) << text;
  const double base = top + Ruler().MeasureFont(font).ascent;
  EXPECT_NEAR(base + extents.y_bearing, ink.top, 1.5) << text;
  EXPECT_NEAR(base + extents.y_bearing + extents.height, ink.bottom, 1.5) << text;
  EXPECT_EQ(colour, ink.darkest) << text;
}

}  // namespace

TEST(X11Picture, HasItsTextsBelowEachOther) {
  const Image image = Usual();
  ExpectText(image, "Hit", kFont, kFont, kText);
  ExpectText(image, "Half", ProgressTop(), kFont, kText);
  ExpectText(image, "Halt", EndingTop(), 0.9 * kFont, kSmallText);
  EXPECT_EQ(kBackground, image.At(0, 0));
  EXPECT_EQ(kBackground, image.At(kWidth - 1, NeededHeight() - 1));
}

TEST(X11Picture, IsAsHighAsItsParts) {
  EXPECT_DOUBLE_EQ(EndingTop() + LineHeight(0.9 * kFont) + kFont,
                   MeasureHeight(kPicture, kWidth, kFont));
}

TEST(X11Picture, HasABarFromMarginToMargin) {
  const Image image = Usual();
  const auto top = static_cast<int>(std::lround(BarTop()));
  const auto bottom = static_cast<int>(std::lround(BarTop() + kBarHeight));
  const int middle = (top + bottom) / 2;
  const int line = kFont / 12;
  for (const auto& [x, pixel] : {std::pair(kFont - 1, kBackground),
                                 {kFont, kText},
                                 {kFont + line - 1, kText},
                                 {kFont + line + 1, kFullBar},
                                 {kWidth / 2 - 1, kFullBar},
                                 {kWidth / 2, kEmptyBar},
                                 {kWidth - kFont - line - 2, kEmptyBar},
                                 {kWidth - kFont - line, kText},
                                 {kWidth - kFont - 1, kText},
                                 {kWidth - kFont + 1, kBackground}}) {
    EXPECT_EQ(pixel, image.At(x, middle)) << x;
  }
  for (const auto& [y, pixel] : {std::pair(top - 1, kBackground),
                                 {top, kText},
                                 {top + line - 1, kText},
                                 {top + line + 1, kFullBar},
                                 {bottom - line - 2, kFullBar},
                                 {bottom - line, kText},
                                 {bottom - 1, kText},
                                 {bottom + 1, kBackground}}) {
    EXPECT_EQ(pixel, image.At(kWidth / 4, y)) << y;
  }
}

TEST(X11Picture, HasALineOfOnePixelAroundASmallBar) {
  constexpr int kSmall = 6;
  const auto height = static_cast<int>(std::ceil(MeasureHeight(kPicture, 200, kSmall)));
  const Image image(kPicture, 200, height, kSmall);
  const auto middle = static_cast<int>(kSmall + LineHeight(kSmall) + 1.4 * kSmall);
  EXPECT_EQ(kBackground, image.At(kSmall - 1, middle));
  EXPECT_EQ(kText, image.At(kSmall, middle));
  EXPECT_EQ(kFullBar, image.At(kSmall + 1, middle));
}

TEST(X11Picture, HasARemarkBelowTheRequestIfThereIsOne) {
  Picture picture = kPicture;
  picture.remark = "Hint";
  const double needed = MeasureHeight(picture, kWidth, kFont);
  EXPECT_DOUBLE_EQ(MeasureHeight(kPicture, kWidth, kFont) + kGap + LineHeight(), needed);
  const Image image(picture, kWidth, static_cast<int>(std::ceil(needed)));
  ExpectText(image, "Hint", BarTop(), kFont, kText);
}

TEST(X11Picture, WrapsATextThatDoesNotFit) {
  Picture picture = kPicture;
  picture.request = "two words";
  const double width = Ruler().Measure(picture.request, kFont).x_advance + 2 * kFont;
  const double oneLine = MeasureHeight(kPicture, width, kFont);
  EXPECT_DOUBLE_EQ(oneLine, MeasureHeight(picture, width, kFont));
  EXPECT_DOUBLE_EQ(oneLine + LineHeight(), MeasureHeight(picture, width - 1, kFont));
}

// All steps are of a twentieth.
TEST(X11Picture, HasSmallerLettersWhereItsHeightDoesNotFit) {
  const Image image(kPicture, kWidth, NeededHeight() - 1);
  const int margin = 38;
  EXPECT_EQ(margin, image.InkIn(0, image.Height()).left);
  EXPECT_EQ(kWidth - margin, image.InkIn(0, image.Height()).right);
}

TEST(X11Picture, HasSmallerLettersWhereAWordIsTooWide) {
  Picture picture = kPicture;
  picture.request = std::string(60, 'W');
  const Image image(picture, kWidth, 2 * NeededHeight());
  const Image::Ink ink = image.InkIn(0, image.Height());
  double font = kFont;
  while (Ruler().Measure(picture.request, font).x_advance > kWidth - 2 * font) font *= 0.95;
  EXPECT_EQ(static_cast<int>(font), ink.left);
  EXPECT_EQ(static_cast<int>(std::ceil(kWidth - font)), ink.right);
}

TEST(X11Picture, IsInTheMiddleOfALargerArea) {
  const Image usual = Usual();
  const Image larger(kPicture, kWidth, NeededHeight() + 100);
  EXPECT_EQ(usual.InkIn(0, usual.Height()).top + 50, larger.InkIn(0, larger.Height()).top);
  EXPECT_EQ(usual.InkIn(0, usual.Height()).bottom + 50, larger.InkIn(0, larger.Height()).bottom);
}

// Where even these do not fit, the top of the picture, which has the request, stays visible.
TEST(X11Picture, ShrinksLettersNoFurtherThanAboutFivePixels) {
  const Image image(kPicture, 100, 20);
  double font = kFont;
  while (font > 5) font *= 0.95;
  const auto bar = static_cast<int>(font + LineHeight(font) + 0.7 * font + 2);
  ASSERT_GT(20, bar);
  EXPECT_EQ(kFullBar, image.At(20, bar));
  EXPECT_EQ(static_cast<int>(font), image.InkIn(bar, bar + 1).left);
}
