#ifndef TOOLS_RNGCTL_TERMINAL_COLOUR_H
#define TOOLS_RNGCTL_TERMINAL_COLOUR_H

#include <string>

enum class Colour { kNone, kDim, kRed, kGreen, kYellow, kCyan };

/// The text in that colour if standard output is a terminal and NO_COLOR does not forbid colours.
/// Otherwise the text unchanged.
std::string Coloured(const std::string& text, Colour colour);

#endif
