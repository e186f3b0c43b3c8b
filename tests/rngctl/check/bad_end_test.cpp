#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::StartsWith;

TEST(Check, AnOperationThatEndsTheProcessIsAnErrorInEveryCheck) {
  const json report = Report(Breaking("self_test_ends_process"));
  EXPECT_EQ("opens self-test", Failed(report));
  const json& selfTest = Find(report, "self-test");
  EXPECT_EQ("error", selfTest.at("severity"));
  EXPECT_EQ("It exited with status 127 in SelfTest.", selfTest.at("found"));
  EXPECT_THAT(selfTest.at("fix"), StartsWith("Link with the library that has the missing"));
}

// The crash comes wherever the main thread happens to be, so the report must not blame that call.
// On a busy machine it may come only after many uses.
TEST(Check, AThreadThatRunsOnIsNamedWhereItCrashes) {
  const json report = Report("--timeout 60 " + Breaking("thread_runs_on"));
  std::size_t crashes = 0;
  for (const json& check : report.at("checks")) {
    if (check.value("found", "").find("crashed") == std::string::npos) continue;
    ++crashes;
    EXPECT_EQ("error", check.at("severity"));
    EXPECT_THAT(check.at("fix"), StartsWith("Stop and join its threads in Release")) << check;
  }
  EXPECT_LT(0U, crashes) << report;
}

TEST(Check, AnOperationThatStopsTheProcessIsAnError) {
  const json check =
      Find(Report("--only null-settings " + FakePlugin("dsdr", "stops_itself")), "null-settings");
  EXPECT_EQ("error", check.at("severity"));
  EXPECT_THAT(check.value("found", ""), StartsWith("It was stopped by signal 19"));
  EXPECT_EQ("No operation may stop the process: find the place with a debugger.", check.at("fix"));
}
