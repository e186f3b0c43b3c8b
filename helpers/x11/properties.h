#ifndef HELPERS_X11_PROPERTIES_H
#define HELPERS_X11_PROPERTIES_H

#include "helpers/x11/picture.h"

#include <X11/Xlib.h>

/// Where a window is, in pixels, and the size of its letters.
struct Placement {
  int x;
  int y;
  int width;
  int height;
  double fontSize;
};

/// In the middle of the screen, as large as the picture needs. Letters of 12 points, by the resolution that
/// the user has set for texts (Xft.dpi), or else by that of the screen.
Placement FindPlacement(Display* display, const Picture& picture);

/// Tells a window manager what the window is. Returns what the first word of a message says when the user
/// closes the window.
Atom Describe(Display* display, Window window, const std::string& title,
              const Placement& placement);

#endif
