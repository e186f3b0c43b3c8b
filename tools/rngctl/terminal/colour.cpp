#include "tools/rngctl/terminal/colour.h"

#include <cstdlib>
#include <unistd.h>

namespace {

bool ShowsColours() {
  const char* const refusal = std::getenv("NO_COLOR");
  return ::isatty(STDOUT_FILENO) == 1 && (!refusal || !*refusal);
}

const char* Start(Colour colour) {
  switch (colour) {
    case Colour::kDim:
      return "\033[2m";
    case Colour::kRed:
      return "\033[31m";
    case Colour::kGreen:
      return "\033[32m";
    case Colour::kYellow:
      return "\033[33m";
    case Colour::kCyan:
      return "\033[36m";
    default:
      return "";
  }
}

}  // namespace

std::string Coloured(const std::string& text, Colour colour) {
  if (colour == Colour::kNone || !ShowsColours()) return text;
  return Start(colour) + text + "\033[0m";
}
