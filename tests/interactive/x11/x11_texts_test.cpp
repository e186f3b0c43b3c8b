// Compares what the window of "unixx11" shows, from beginning to end, with the same pictures drawn here.

#include "tests/interactive/host_process.h"
#include "tests/interactive/moving_robot.h"
#include "tests/interactive/shown_window.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

// Last, because the macros of Xlib would clash with names in the headers above.
#include "helpers/x11/properties.h"

#include <X11/Xutil.h>
#include <cairo-xlib.h>

namespace {

const Picture kFirst = {
    "A program needs random bytes. Move the mouse around in this window, or press different keys "
    "at irregular intervals, until the bar is full.",
    "", 0, "0%", "To cancel, press Escape or close the window."};
const Picture kRegular = {"The input is too regular to be random. No random bytes were generated.",
                          "", 0, "0%", "To close the window, press Escape."};
const Picture kNetwork = {kFirst.request,
                          "You may be connected over a network, so twice as many keys are needed.",
                          0, "0%", kFirst.ending};
const Picture kFull = {kFirst.request, "", 100, "100%. That is enough. Please stop typing.",
                       kFirst.ending};

class X11Texts : public testing::Test {
 protected:
  explicit X11Texts(const std::string& address = "")
      : display(XOpenDisplay(server.display.c_str())),
        host({DRAWING_HOST, "unixx11", "32"}, {"DISPLAY=" + address + server.display}) {}
  ~X11Texts() override { XCloseDisplay(display); }
  void SetUp() override { ASSERT_TRUE(window.Appears() && window.GetsFocus()); }

  // Within half a minute. The window has the size that its first picture needs.
  bool Shows(const Picture& picture, const Picture& first = kFirst) {
    const auto expected = Draw(picture, FindPlacement(display, first));
    return WaitUntil([&] { return expected == window.Pixels(); });
  }

  XServer server{{"-screen", "0", "1024x768x24", "-dpi", "96", "-listen", "tcp"}};
  Display* display;
  HostProcess host;
  ShownWindow window{server.display, "A program needs random bytes"};
  MovingRobot robot{server.display, 512, 384};

 private:
  std::vector<unsigned long> Draw(const Picture& picture, const Placement& placement) {
    const auto width = static_cast<unsigned>(placement.width);
    const auto height = static_cast<unsigned>(placement.height);
    const Pixmap pixmap = XCreatePixmap(display, DefaultRootWindow(display), width, height, 24);
    cairo_surface_t* const surface = cairo_xlib_surface_create(
        display, pixmap, DefaultVisual(display, 0), placement.width, placement.height);
    cairo_t* const context = cairo_create(surface);
    cairo_push_group(context);
    Paint(context, picture, placement.width, placement.height, placement.fontSize);
    cairo_pop_group_to_source(context);
    cairo_paint(context);
    cairo_destroy(context);
    cairo_surface_destroy(surface);
    XImage* const image = XGetImage(display, pixmap, 0, 0, width, height, AllPlanes, ZPixmap);
    std::vector<unsigned long> pixels;
    for (int y = 0; y < placement.height; ++y) {
      for (int x = 0; x < placement.width; ++x) pixels.push_back(XGetPixel(image, x, y) & 0xFFFFFF);
    }
    XDestroyImage(image);
    XFreePixmap(display, pixmap);
    return pixels;
  }
};

struct X11TextsOverANetwork : X11Texts {
  X11TextsOverANetwork() : X11Texts("localhost") {}
};

}  // namespace

TEST_F(X11Texts, AskForInputUntilThereIsEnough) {
  EXPECT_TRUE(Shows(kFirst));
  robot.Type(3000);
  EXPECT_TRUE(Shows(kFull));
  EXPECT_EQ("ready\ndrawn\ndescriptors 0\nchildren 0\n", host.Finish());
}

TEST_F(X11Texts, SayThatTheInputIsTooRegular) {
  robot.Shake(120);
  EXPECT_TRUE(Shows(kRegular));
  robot.Do({"key", "Escape"});
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\n", host.Finish());
}

TEST_F(X11TextsOverANetwork, SayThatMoreKeysAreNeededAndThenThatTheInputIsTooRegular) {
  EXPECT_TRUE(Shows(kNetwork, kNetwork));
  robot.Shake(120);
  EXPECT_TRUE(Shows(kRegular, kNetwork));
  robot.Do({"key", "Escape"});
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\n", host.Finish());
}
