// What happens to the process beside a program's own when that forks, closes descriptors or ends.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <thread>

namespace {

class Processes : public OpensslTest {};

}  // namespace

TEST_F(Processes, ThreadsShareOne) {
  EXPECT_EQ("o 1600 - 0 X 0\n", RunHost("threads 8 200").output);
  EXPECT_TRUE(AllEnd());
}

TEST_F(Processes, ACopyHasItsOwn) {
  EXPECT_EQ("oooo", RunHost("fork").output);
  EXPECT_TRUE(AllEnd());
}

TEST_F(Processes, ACopyHasItsOwnBeforeTheOriginal) {
  EXPECT_EQ("ooo", RunHost("fork_first").output);
  EXPECT_TRUE(AllEnd());
}

TEST_F(Processes, CopiesInTheMiddleOfADrawWaitForNothing) {
  EXPECT_EQ(std::string(100, 'o'), RunHost("copies 100").output);
  EXPECT_TRUE(AllEnd());
}

TEST_F(Processes, AProgramMayCloseAllDescriptors) {
  EXPECT_EQ("oo", RunHost("close_all").output);
  EXPECT_TRUE(AllEnd());
}

TEST_F(Processes, TheStandardStreamsStayClosed) {
  EXPECT_EQ("o", RunHost("close_standard_streams").output);
}

TEST_F(Processes, ItIsNoChildOfTheProgram) { EXPECT_EQ("oo", RunHost("children").output); }

TEST_F(Processes, AnotherContextHasItsOwn) {
  EXPECT_EQ("ooo", RunHost("other_context " + ConfigurationFile()).output);
  EXPECT_TRUE(AllEnd());
}

TEST_F(Processes, ItIsStartedAgainAfterItsEnd) {
  EXPECT_EQ("oo", RunHost("shell 'pkill -KILL -f ^" + DrawingProgram() + " && sleep 0.2'").output);
}

TEST_F(Processes, ItsEndDuringADrawFailsTheDraw) {
  Command("hang");
  EXPECT_TRUE(Refused(Run("(while ! [ -s " + TreePath("script.draws") +
                          " ]; do sleep 0.02; done; pkill -KILL -f ^" + DrawingProgram() +
                          ") & openssl rand -hex 32"),
                      "The program that draws has terminated."));
}

// At the start of the program that draws, in the middle of a draw, and between two. Bytes from elsewhere would show.
TEST_F(Processes, ItsEndAtAnyMomentGivesNoOtherBytes) {
  Command("slow");
  const Result result = Run(R"(
    while :; do
      for moment in 1 2 3 4 5 6 7 8 9 11 13 17; do
        sleep $(printf 0.%03d $moment)
        pkill -KILL -f ^)" + DrawingProgram() +
                            R"(
      done
    done &
    )" + Host() + " draw 150; kill $!");
  EXPECT_EQ(150u, result.output.size()) << result.errors;
  EXPECT_EQ(std::string::npos, result.output.find('X')) << result.output;
  EXPECT_NE(std::string::npos, result.output.find('o')) << result.output;
  EXPECT_NE(std::string::npos, result.output.find('-')) << result.output;
}

TEST_F(Processes, ItEndsWithAProgramThatIsKilled) {
  const Result result = Run(Host() + " shell 'kill -KILL $PPID'");
  EXPECT_EQ("o", result.output);
  EXPECT_TRUE(AllEnd());
}

TEST_F(Processes, ItEndsWhenTheProgramBecomesAnother) {
  const Result result = RunHost("execute 'while pgrep -f ^" + DrawingProgram() +
                                " >/dev/null; do sleep 0.02; done; echo alone'");
  EXPECT_EQ("oalone\n", result.output);
}

// A copy that never draws keeps the socket open.
TEST_F(Processes, ItEndsWithTheOriginalThatACopyOutlives) {
  EXPECT_EQ("o", RunHost("leave_copy").output);
  EXPECT_TRUE(AllEnd());
}

// Ctrl-C is for the program, which may catch it.
TEST_F(Processes, TheTerminalsSignalsDoNotReachIt) { EXPECT_EQ("oo", RunHost("interrupt").output); }
