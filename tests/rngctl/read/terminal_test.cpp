// "rngctl read" on a terminal.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

constexpr char kErase[] = "\r\033[K";

// script(1) runs its command on a terminal.
Result RunOnTerminal(const std::string& command) {
  return RunShell("script -qec '" + command + "' " + TreePath("typescript"));
}

}  // namespace

// A shell script plays the user at the terminal.
TEST_F(RngctlTest, AnInterruptedDrawLeavesTheTerminalAsItWas) {
  InstallPlugin("dsdr", "drawing/HideTyping");
  const std::string log = TreePath("log");
  WriteFile(TreePath("script"),
            Rngctl() + " read dsdr -n 5000 -o " + TreePath("key") + " <&1 2>" + log +
                " & until grep hidden " + log +
                "; do sleep 0.01; done >/dev/null 2>&1; stty -a; kill $!; wait $!\n"
                "stty -a");
  const std::string output = RunOnTerminal("sh " + TreePath("script")).output;
  const std::size_t hidden = output.find(" -echo ");
  ASSERT_NE(std::string::npos, hidden);
  EXPECT_NE(std::string::npos, output.find(" echo ", hidden));
}

// The second draw of the plug-in takes longer than a second.
class ReadProgress : public RngctlTest {
 protected:
  void SetUp() override {
    RngctlTest::SetUp();
    InstallPlugin("dsdr", "drawing/BeSlow");
  }
};

TEST_F(ReadProgress, ABarIsShownWhileAFileIsWritten) {
  const Result result = RunOnTerminal(Rngctl() + " read dsdr -n 5000 -o " + TreePath("key"));
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, HasSubstr("\r[##########"));
  EXPECT_THAT(result.output, EndsWith(kErase));
}

TEST_F(ReadProgress, NoBarIsShownAfterTheLastByte) {
  const Result result = RunOnTerminal(Rngctl() + " read dsdr -n 2000 -o " + TreePath("key"));
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.output);
}

TEST_F(ReadProgress, NoBarStandsOnALineWithTheAnswer) {
  for (const std::string& command :
       {Rngctl() + " read dsdr -n 5000", Rngctl() + " read dsdr -n 5000 -o /dev/stdout",
        Rngctl() + " read dsdr -n 5000 | cat"}) {
    const Result result = RunOnTerminal(command);
    EXPECT_EQ(0, result.status);
    EXPECT_THAT(result.output, MatchesRegex("[0-9a-f]+\r\n")) << command;
    EXPECT_EQ(10002U, result.output.size());
  }
}
