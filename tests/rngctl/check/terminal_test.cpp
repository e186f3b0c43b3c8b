#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace {

// Runs the command in a terminal of its own. What is typed there comes from `input`.
std::string InTerminal(const std::string& command, const std::string& input) {
  return RunShell(input + " | script -qec '" + command + "' /dev/null").output;
}

std::string CheckPrompting(const std::string& report) {
  return RNGCTL " check --json --timeout 1 " + Breaking("prompts_on_terminal") + " >" + report;
}

constexpr char kNobody[] = "sleep 0";

}  // namespace

TEST(CheckInTerminal, AQuestionThatNobodyAnswersIsNoFault) {
  const std::string file = TreePath("report");
  EXPECT_THAT(InTerminal(CheckPrompting(file), kNobody), HasSubstr("Press a key: "));
  const json report = json::parse(ReadFile(file));
  EXPECT_EQ("", Failed(report));
  EXPECT_EQ("a draw takes long, or waits for a user or a device", Reason(report, "draws-differ"));
  EXPECT_EQ("passed", Find(report, "cancel").at("result"));
}

TEST(CheckInTerminal, AQuestionThatIsAnsweredIsNoFault) {
  const std::string file = TreePath("report");
  InTerminal(CheckPrompting(file), "yes | head -c 100000");
  const json report = json::parse(ReadFile(file));
  EXPECT_EQ("", Failed(report));
}

// A check may end while a draw asks, without echo.
TEST(CheckInTerminal, TheSettingsOfTheTerminalAreRestored) {
  const std::string output = InTerminal(
      "stty echo; " + CheckPrompting(TreePath("report")) + "; stty -a | grep -o \".echo \"",
      kNobody);
  EXPECT_THAT(output, AllOf(HasSubstr("Press a key: "), EndsWith(" echo \r\n")));
}
