#include "helpers/x11/properties.h"

#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace {

constexpr double kPoints = 12;   // the size of letters
constexpr double kLetters = 34;  // the width of the window, in sizes of letters

// Screens that report no size, or an implausible one, count as 96 dpi.
double FindDpi(Display* display) {
  if (const char* const text = XGetDefault(display, "Xft", "dpi")) {
    const double dpi = std::strtod(text, nullptr);
    if (dpi >= 48 && dpi <= 768) return dpi;
  }
  const int screen = DefaultScreen(display);
  const double millimetres = DisplayWidthMM(display, screen);
  const double dpi = millimetres > 0 ? DisplayWidth(display, screen) * 25.4 / millimetres : 0;
  return dpi >= 72 && dpi <= 384 ? dpi : 96;
}

Atom Find(Display* display, const char* name) { return XInternAtom(display, name, False); }

void SetSize(Display* display, Window window, const Placement& placement) {
  const std::unique_ptr<XSizeHints, int (*)(void*)> hints(XAllocSizeHints(), XFree);
  if (!hints) return;
  hints->flags = PSize | PMinSize | PWinGravity;
  hints->width = placement.width;
  hints->height = placement.height;
  hints->min_width = placement.width / 3;
  hints->min_height = placement.height / 3;
  hints->win_gravity = CenterGravity;
  XSetWMNormalHints(display, window, hints.get());
}

void SetInput(Display* display, Window window) {
  const std::unique_ptr<XWMHints, int (*)(void*)> hints(XAllocWMHints(), XFree);
  if (!hints) return;
  hints->flags = InputHint | StateHint;
  hints->input = True;
  hints->initial_state = NormalState;
  XSetWMHints(display, window, hints.get());
}

void SetNames(Display* display, Window window, const std::string& title) {
  XStoreName(display, window, title.c_str());
  XChangeProperty(display, window, Find(display, "_NET_WM_NAME"), Find(display, "UTF8_STRING"), 8,
                  PropModeReplace, reinterpret_cast<const unsigned char*>(title.data()),
                  static_cast<int>(title.size()));
  char name[] = "rng-gather-x11";
  char group[] = "Rng-gather-x11";
  XClassHint hint = {name, group};
  XSetClassHint(display, window, &hint);
}

}  // namespace

Placement FindPlacement(Display* display, const Picture& picture) {
  const int screenWidth = DisplayWidth(display, DefaultScreen(display));
  const int screenHeight = DisplayHeight(display, DefaultScreen(display));
  Placement placement = {};
  placement.fontSize = kPoints * FindDpi(display) / 72;
  placement.width = std::min(static_cast<int>(kLetters * placement.fontSize), screenWidth);
  const double height = MeasureHeight(picture, placement.width, placement.fontSize);
  placement.height = std::min(static_cast<int>(std::ceil(height)), screenHeight);
  placement.x = (screenWidth - placement.width) / 2;
  placement.y = (screenHeight - placement.height) / 2;
  return placement;
}

ClosingMessage Describe(Display* display, Window window, const std::string& title,
                        const Placement& placement) {
  SetNames(display, window, title);
  SetSize(display, window, placement);
  SetInput(display, window);
  const Atom dialog = Find(display, "_NET_WM_WINDOW_TYPE_DIALOG");
  XChangeProperty(display, window, Find(display, "_NET_WM_WINDOW_TYPE"), XA_ATOM, 32,
                  PropModeReplace, reinterpret_cast<const unsigned char*>(&dialog), 1);
  ClosingMessage closing = {Find(display, "WM_PROTOCOLS"), Find(display, "WM_DELETE_WINDOW")};
  XSetWMProtocols(display, window, &closing.word, 1);
  return closing;
}
