#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

TEST(Check, AnAnswerThatIsNotUnderstoodIsAnInternalError) {
  const Result result = Check("--json " + Breaking("garbles_messages"));
  EXPECT_EQ(1, result.status);
  const json report = json::parse(result.output);
  const json& check = Find(report, "name");
  EXPECT_EQ("failed", check.at("result"));
  EXPECT_EQ("Internal error: the check gave no usable answer.", check.at("found"));
}

TEST(Check, ACrashSpoilsOnlyTheChecksThatNeedTheOperation) {
  const json report = Report(Breaking("name_crashes"));
  EXPECT_EQ(
      "name-length name-in-catalogue plain-texts device-report own-device failed-draw-is-zero "
      "concurrent-calls no-exceptions no-lifecycle-calls no-output",
      Names(report, "not-examined"));
  EXPECT_EQ("GetName crashed with signal 11 (Segmentation fault) in the check name",
            Reason(report, "concurrent-calls"));
}

TEST(Check, WithoutAnObjectNothingIsSaidOfItsOperations) {
  const json report = Report(Breaking("factory_gives_null"));
  EXPECT_EQ("the factory returns no object", Reason(report, "name"));
  EXPECT_THAT(Reason(report, "no-exceptions"),
              AllOf(HasSubstr("were not called, or did not return: SetSettings, IsAvailable, GetN"),
                    Not(HasSubstr("the factory"))));
}

TEST(Check, WhatWasNotCalledIsNotSaidToKeepTheRules) {
  const std::string unavailable = Reason(Report(Breaking("unavailable")), "no-lifecycle-calls");
  EXPECT_THAT(unavailable, EndsWith(": GetName, GetDescription, GetHardwareId, GetFlags, "
                                    "SelectDevice, Generate, SelfTest, Cancel"));
  EXPECT_THAT(Reason(Report(Breaking("draw_crashes")), "no-exceptions"), EndsWith(": Generate"));
  EXPECT_THAT(Reason(Report(Breaking("draw_throws")), "no-lifecycle-calls"),
              EndsWith(": Generate"));
  EXPECT_EQ("passed", Find(Report(Breaking("draw_fails")), "no-exceptions").at("result"));
}

TEST(Check, ThreadsThatCannotDrawSayNothingOfConcurrentDraws) {
  for (const auto& [variant, reason] :
       {std::pair("draw_crashes",
                  "Generate crashed with signal 6 (Aborted) in the check draw-succ"),
        std::pair("draw_throws", "Generate throws an exception"),
        std::pair("draw_fails", "Generate returns false"),
        std::pair("failed_draw_leaves_bytes", "draws sometimes fail even when called alone")}) {
    EXPECT_THAT(Reason(Report(Breaking(variant)), "concurrent-calls"), StartsWith(reason))
        << variant;
  }
}

TEST(Check, AChangeOfTheProcessIsFoundInWhicheverOperation) {
  for (const char* operation :
       {"Name", "Description", "HardwareId", "Flags", "SelectDevice", "SelfTest", "Cancel"}) {
    const std::string plugin = Breaking("changes_umask_in_" + std::string(operation));
    EXPECT_EQ("It changes the umask to 0777.",
              Found(Report("--only process-state " + plugin), "process-state"))
        << operation;
  }
}

TEST(Check, WhatGrowsIsNamed) {
  for (const auto& [variant, what] :
       {std::pair("leaks_threads", "threads"), std::pair("file_stays_each_time", "open files")}) {
    EXPECT_THAT(Found(Report("--only load-cycles " + Breaking(variant)), "load-cycles"),
                MatchesRegex("Over 200 uses, the number of " + std::string(what) +
                             " grew steadily from [0-9]+ to [0-9]+[.]"));
  }
}

TEST(Check, WhatAPluginLeavesRunningIsEnded) {
  std::filesystem::copy_file("/bin/sleep", TreePath("sleep"));
  const json report = Report(FakePlugin("dsdr", "leaves_process"));
  EXPECT_EQ("process-state", Failed(report));
  EXPECT_THAT(Found(report, "process-state"), StartsWith("It leaves a child process: sleep (pro"));
  EXPECT_EQ(0U, CountProcessesOf(TreePath("sleep")));
}

TEST(Check, WhereAnyDeviceIsAcceptedNoneIsRefused) {
  EXPECT_EQ(
      "it accepts any identifier",
      Reason(Report("--only refused-device " + Breaking("takes_every_device")), "refused-device"));
}

// The first call is recorded. If all were, the process would never be silent.
TEST(Check, CallsWithoutEndDoNotKeepAPluginAlive) {
  const Result result = RunShell(
      "timeout 60 " RNGCTL " check --json --timeout 1 --only null-settings,no-lifecycle-calls " +
      FakePlugin("dsdr", "keeps_initializing"));
  EXPECT_EQ("It did not answer within 1 s in IsAvailable with null settings.",
            Found(json::parse(result.output, nullptr, false), "null-settings"));
}

// Hosts never select a device of a generator that is not available.
TEST(Check, WithoutAGeneratorTheReportedDevicesAreNotSelected) {
  const json report = Report("--only device-report " + FakePlugin("dsdr", "reports_absent_device"));
  EXPECT_EQ("device-report", Names(report, "passed"));
}
