#ifndef PLUGINS_INTERACTIVE_DISPLAY_H
#define PLUGINS_INTERACTIVE_DISPLAY_H

#include <string>

/// Whether an X server listens at $DISPLAY. For another machine this is assumed: to connect could take long.
bool HasDisplay();

/// Why there is no display, and what to do; "" if there is one.
std::string FindProblemOfDisplay();

#endif
