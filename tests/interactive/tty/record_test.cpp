// rng-gather-tty --record FILE

#include "tests/interactive/tty/terminal_draw.h"
#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <optional>

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

class Record : public testing::Test {
 protected:
  HostProcess& Start(const HostProcess::Words& arguments) {
    HostProcess::Words command = {INSTALLATION "/libexec/rngaggregator/rng-gather-tty"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return host.emplace(command, HostProcess::Words{"TERM=dumb"}, terminal.Path());
  }

  const std::string file = TreePath("record");
  PseudoTerminal terminal;
  const termios before = terminal.Settings();
  TypingRobot robot{terminal};
  std::optional<HostProcess> host;
};

}  // namespace

TEST_F(Record, HasALineForEachPress) {
  Start({"--record", file});
  ASSERT_TRUE(terminal.Shows("press Ctrl-C"));
  for (int i = 1; i <= 3; ++i) {
    robot.PressKey("a");
    ASSERT_TRUE(terminal.Shows("Key presses: " + std::to_string(i)));
  }
  terminal.Press("bc");
  ASSERT_TRUE(terminal.Shows("Key presses: 5"));
  terminal.Press("\x03");
  host->Finish();
  EXPECT_EQ(0, host->Status());
  EXPECT_THAT(ReadFile(file), MatchesRegex("nanoseconds,key,alone\n"
                                           "[0-9]+,97,1\n[0-9]+,97,1\n[0-9]+,97,1\n"
                                           "[0-9]+,98,0\n[0-9]+,99,0\n"));
  EXPECT_EQ(0600U, ModeOf(file));
  EXPECT_TRUE(before == terminal.Settings());
  EXPECT_TRUE(host->IsAlone());
}

TEST_F(Record, EndsWithControlD) {
  Start({"--record", file});
  ASSERT_TRUE(terminal.Shows("press Ctrl-C"));
  EXPECT_TRUE(Sleeps(host->Get()));
  terminal.Press("\x04");
  EXPECT_TRUE(terminal.Shows("Key presses recorded: 0"));
  host->Finish();
  EXPECT_EQ(0, host->Status());
}

TEST_F(Record, EndsWithASignal) {
  Start({"--record", file});
  ASSERT_TRUE(terminal.Shows("press Ctrl-C"));
  host->Send(SIGTERM);
  EXPECT_TRUE(terminal.Shows("Key presses recorded: 0"));
  host->Finish();
  EXPECT_EQ(0, host->Status());
  EXPECT_TRUE(before == terminal.Settings());
}

TEST_F(Record, TakesNoKeysOfAnotherProgram) {
  const std::string other = TreePath("other");
  const std::string program = INSTALLATION "/libexec/rngaggregator/rng-gather-tty";
  host.emplace(
      HostProcess::Words{"/bin/sh", "-c",
                         program + " --record " + file + " & until test -e " + file +
                             "; do sleep 0.1; done; " + program + " --record " + other + "; wait"},
      HostProcess::Words{"TERM=dumb"}, terminal.Path());
  EXPECT_TRUE(terminal.Shows("Another program is reading keys"));
  terminal.Press("\x03");
  host->Finish();
  EXPECT_TRUE(std::filesystem::exists(file));
  EXPECT_FALSE(std::filesystem::exists(other));
}

TEST_F(Record, OverwritesNothing) {
  WriteFile(file, "mine");
  EXPECT_EQ("", Start({"--record", file}).Finish());
  EXPECT_TRUE(terminal.Shows("rng-gather-tty: " + file + ": File exists"));
  EXPECT_NE(0, host->Status());
  EXPECT_EQ("mine", ReadFile(file));
}

TEST_F(Record, NeedsDescriptorsForTheProcessThatRestoresTheTerminal) {
  host.emplace(HostProcess::Words{"/bin/sh", "-c",
                                  "ulimit -n 8; exec " INSTALLATION
                                  "/libexec/rngaggregator/rng-gather-tty --record " +
                                      file},
               HostProcess::Words{"TERM=dumb"}, terminal.Path());
  host->Finish();
  EXPECT_TRUE(terminal.Shows("rng-gather-tty: There are too many open files.\r\n"));
  EXPECT_NE(0, host->Status());
  EXPECT_TRUE(before == terminal.Settings());
}

TEST_F(Record, LeavesTheTerminalWhenItIsKilled) {
  Start({"--record", file});
  ASSERT_TRUE(terminal.Shows("press Ctrl-C"));
  host->Send(SIGKILL);
  host->Finish();
  EXPECT_TRUE(host->IsAlone());
  EXPECT_TRUE(before == terminal.Settings());
}

TEST_F(Record, IsTheOnlyUseByHand) {
  EXPECT_EQ("", Start({"--help"}).Finish());
  EXPECT_TRUE(terminal.Shows("rngctl read"));
  EXPECT_NE(0, host->Status());
}
