#include "tools/rngctl/terminal/colour.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

namespace {

const std::string kPlain = "text";

// What `Coloured` returns while standard output is a terminal, or else a pipe.
std::string ColouredFor(bool isTerminal, Colour colour) {
  int ends[2];
  const int failed =
      isTerminal ? ::openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) : ::pipe(ends);
  if (failed != 0) return "there is no such descriptor";
  const int before = ::dup(STDOUT_FILENO);
  ::dup2(ends[1], STDOUT_FILENO);
  std::string text = Coloured(kPlain, colour);
  ::dup2(before, STDOUT_FILENO);
  for (const int descriptor : {before, ends[0], ends[1]}) ::close(descriptor);
  return text;
}

}  // namespace

TEST(Coloured, HasTheColourOnATerminal) {
  ::unsetenv("NO_COLOR");
  for (const auto& [colour, start] :
       {std::pair(Colour::kDim, "\033[2m"), std::pair(Colour::kRed, "\033[31m"),
        std::pair(Colour::kGreen, "\033[32m"), std::pair(Colour::kYellow, "\033[33m"),
        std::pair(Colour::kCyan, "\033[36m")}) {
    EXPECT_EQ(start + kPlain + "\033[0m", ColouredFor(true, colour));
    EXPECT_EQ(kPlain, ColouredFor(false, colour));
  }
  EXPECT_EQ(kPlain, ColouredFor(true, Colour::kNone));
}

TEST(Coloured, IsPlainIfTheUserWantsNoColours) {
  ::setenv("NO_COLOR", "0", 1);
  EXPECT_EQ(kPlain, ColouredFor(true, Colour::kRed));
  ::setenv("NO_COLOR", "", 1);
  EXPECT_EQ("\033[31m" + kPlain + "\033[0m", ColouredFor(true, Colour::kRed));
}
