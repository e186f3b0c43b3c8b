#ifndef TOOLS_RNGCTL_TERMINAL_COLOUR_H
#define TOOLS_RNGCTL_TERMINAL_COLOUR_H

#include <string>

enum class Colour { kNone, kDim, kRed, kGreen, kYellow, kCyan };

/// The text in that colour where standard output shows colours: it is a terminal, and NO_COLOR does not
/// forbid them. Elsewhere the text as it is.
std::string Coloured(const std::string& text, Colour colour);

#endif
