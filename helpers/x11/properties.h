#ifndef HELPERS_X11_PROPERTIES_H
#define HELPERS_X11_PROPERTIES_H

#include "helpers/x11/picture.h"

#include <X11/Xlib.h>

/// The position and size of a window in pixels, and the size of its letters.
struct Placement {
  int x;
  int y;
  int width;
  int height;
  double fontSize;
};

/// Places a window in the middle of the screen, as large as the picture needs. Letters have 12 points, at the text
/// resolution that the user has set (Xft.dpi), or else at the screen's.
Placement FindPlacement(Display* display, const Picture& picture);

/// The type and the first word of the message that a window gets when the user closes it.
struct ClosingMessage {
  Atom type;
  Atom word;
};

/// Sets the properties that window managers read.
ClosingMessage Describe(Display* display, Window window, const std::string& title,
                        const Placement& placement);

#endif
