// Draws from "biokbd" on a terminal.

#include "tests/interactive/host_process.h"
#include "tests/interactive/pseudo_terminal.h"
#include "tests/interactive/typing_robot.h"

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr char kCancels[] = "Ctrl-C cancels";
constexpr char kEnough[] = "100 %";

class TerminalDraw : public testing::Test {
 protected:
  PseudoTerminal terminal;
  const termios before = terminal.Settings();
  TypingRobot robot{terminal};
  HostProcess host{{DRAWING_HOST, "biokbd", "32"}, {"TERM=dumb"}, terminal.Path()};
};

}  // namespace

TEST_F(TerminalDraw, SucceedsAfterEnoughKeys) {
  ASSERT_TRUE(terminal.Shows(kCancels));
  ASSERT_TRUE(robot.TypeUntil(kEnough));
  EXPECT_EQ("ready\ndrawn\ndescriptors 0\nchildren 0\n", host.Finish());
  EXPECT_TRUE(host.IsAlone());
  EXPECT_TRUE(before == terminal.Settings());
  EXPECT_GE(robot.Presses(), 161);
  EXPECT_LE(robot.Presses(), 400);
}
