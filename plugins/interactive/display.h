#ifndef PLUGINS_INTERACTIVE_DISPLAY_H
#define PLUGINS_INTERACTIVE_DISPLAY_H

#include <string>

/// Whether an X server listens at $DISPLAY. One on another machine is believed to: asking could take long.
bool HasDisplay();

/// Why not, and what to do; "" if one does.
std::string FindProblemOfDisplay();

#endif
