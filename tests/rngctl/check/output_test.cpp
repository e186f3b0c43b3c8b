#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

TEST(CheckOutput, ShowsEachLineOnceWithItsCount) {
  const Result result = Check(FakePlugin("dsdr", "prints_lines"));
  EXPECT_EQ(0, result.status);
  EXPECT_GT(2000U, result.errors.size());  // on a busy machine a few calls seem to wait
  EXPECT_THAT(result.output,
              MatchesRegex("(.|\n)*\nprinted       \"looking for .\\[1mdevices\"\n"
                           "              where: standard error, [0-9]{4} times, in null-settings, "
                           "empty-settings, built-in-settings and [0-9]+ more checks\n(.|\n)*"));
  EXPECT_THAT(result.output, HasSubstr("\nprinted       \"test 18\"\n"));
  EXPECT_THAT(result.output, Not(HasSubstr("\"test 19\"")));
  EXPECT_THAT(result.output, HasSubstr(" more lines\n\n"));
}

TEST(CheckOutput, IsInTheJson) {
  const json report = Report(Breaking("prints"));
  const json& first = report.at("output").at(0);
  EXPECT_EQ("stdout", first.at("stream"));
  EXPECT_EQ("drawing 0", first.at("line"));
  EXPECT_EQ("empty-draw", first.at("checks").at(0));
  EXPECT_LE(5, first.at("count"));
  EXPECT_EQ(0, report.at("omitted_lines"));
  EXPECT_THAT(Report(Breaking("correct")).at("output"), IsEmpty());
}

TEST(CheckOutput, OfMegabytesIsCounted) {
  const json report = Report("--timeout 1 " + FakePlugin("dsdr", "prints_megabytes"));
  ASSERT_EQ(1U, report.at("output").size());
  EXPECT_LE(40000 * 10, report.at("output").at(0).at("count"));
}

// A plug-in that waits may have asked something, so its question is shown before the report.
TEST(CheckOutput, ShowsAQuestionAtOnce) {
  const std::string file = TreePath("errors");
  const Result result =
      Check("--json --timeout 1 " + FakePlugin("dsdr", "asks_user") + " 2>" + file);
  EXPECT_EQ("", Failed(json::parse(result.output)));
  EXPECT_THAT(ReadFile(file), HasSubstr("Press the button: \n"));
  const json question = json::parse(result.output).at("output").at(0);
  EXPECT_EQ("Press the button: ", question.at("line"));
  EXPECT_EQ("stderr", question.at("stream"));
}

TEST(CheckOutput, AQuestionLeavesTheNoticeOfATerminalBelowIt) {
  const Result result = RunShell("script -qec '" RNGCTL " check --only draw-succeeds --timeout 8 " +
                                 FakePlugin("dsdr", "asks_user") + "' " + TreePath("typescript"));
  EXPECT_THAT(result.output, HasSubstr("Checking draw-succeeds ...\r\033[KPress it now: \r\n"
                                       "Checking draw-succeeds ..."));
}

// The self-test prints 200 different lines; each of five draws of nothing prints another one.
TEST(CheckOutput, CountsEveryLineThatItDoesNotShow) {
  const json report = Report("--only self-test,empty-draw " + FakePlugin("dsdr", "prints_lines"));
  EXPECT_EQ(100U, report.at("output").size());
  EXPECT_EQ(101 + 5, report.at("omitted_lines"));
}

TEST(CheckOutput, ShowsTheBeginningOfALongLine) {
  EXPECT_EQ(
      "During the check null-settings it prints \"" + std::string(60, '-') + "\".",
      Found(Report("--only no-output " + FakePlugin("dsdr", "prints_long_line")), "no-output"));
}

// The check looks again in another process.
TEST(CheckOutput, NamesEachCheckOnce) {
  const json report = Report("--only draws-look-random " + Breaking("prints"));
  for (const json& line : report.at("output")) EXPECT_EQ(1U, line.at("checks").size()) << line;
  EXPECT_LT(0U, report.at("output").size());
}

// Three checks make a self-test each: 101 of its lines are beyond the limit of the report, 80 beyond the text's.
TEST(CheckOutput, CountsEveryLineThatTheTextDoesNotShow) {
  EXPECT_THAT(Check("--only self-test,draws-after-calls,process-state " +
                    FakePlugin("dsdr", "prints_lines"))
                  .output,
              HasSubstr("\nprinted       543 more lines\n"));
}
