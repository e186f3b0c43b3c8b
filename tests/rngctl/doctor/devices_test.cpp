#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

void InstallBreaking(const std::string& variant) {
  std::filesystem::copy(FakePlugin("dsdr", "breaking/" + variant), TreePath("lib"));
}

}  // namespace

TEST_F(Doctor, ShowsTheDevicesThatAPluginReports) {
  InstallPlugin("dsdr", "reports_devices");
  const json report = Examine("dsdr");
  const json row = RowOf(report, "dsdr");
  EXPECT_EQ(json::parse(R"([{"identifier": "R1", "text": "Reader 1"}])"), row.at("devices"));
  EXPECT_EQ(json({"Reader 2 is off. Switch it on."}), row.at("problems"));
  EXPECT_THAT(row.at("warnings"), IsEmpty());
  EXPECT_THAT(Run("doctor dsdr").output,
              HasSubstr("dsdr, device R1: Reader 1\n"
                        "dsdr, problem: Reader 2 is off. Switch it on.\n"));
  const Result result = MatchSchema("doctor.schema.json", report.dump());
  EXPECT_EQ(0, result.status) << result.errors;
}

TEST_F(Doctor, ShowsTheDevicesOfAPluginWithoutAName) {
  InstallPlugin("dsdr", "reports_without_name");
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("nameless", row.at("verdict"));
  EXPECT_EQ(json::parse(R"([{"identifier": "R1", "text": "Reader 1"}])"), row.at("devices"));
}

TEST_F(Doctor, APluginThatReportsNothingHasNoDevices) {
  InstallPlugin("dsdr", "stub");
  const json row = ExamineKind("dsdr");
  EXPECT_THAT(row.at("devices"), IsEmpty());
  EXPECT_THAT(row.at("problems"), IsEmpty());
}

TEST_F(Doctor, AProblemThatAPluginReportsIsTheAdvice) {
  InstallPlugin("Rutoken", "reports_problem");
  const json row = ExamineKind("Rutoken");
  EXPECT_EQ("not-available", row.at("verdict"));
  EXPECT_EQ("There is no token. Insert one.", row.at("fix"));
  EXPECT_EQ(json({"There is no token. Insert one."}), row.at("problems"));
  EXPECT_THAT(Run("doctor Rutoken").output, Not(HasSubstr("problem: ")));
}

// Programs never call GetRngReport, so its crash does not affect them.
TEST_F(Doctor, AReportThatCrashesIsAWarning) {
  InstallBreaking("report_crashes");
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("loaded", row.at("verdict"));
  EXPECT_EQ(json({"Its device report crashed with signal 6 (Aborted)."}), row.at("warnings"));
}

// Each step of its start takes half of that.
TEST_F(Doctor, APluginHasOneLimitForAllOfItsStart) {
  InstallPlugin("dsdr", "slow_steps");
  const json row = ExamineKind("dsdr", "", 1);
  EXPECT_EQ("no-answer", row.at("verdict"));
  EXPECT_THAT(Text(row.at("summary")), testing::StartsWith("did not answer within 1 s"));
}

// Together they take 3.2 s.
TEST_F(Doctor, EachPluginOfAStartHasTheWholeLimit) {
  for (const char* kind : {"dsdr", "accord", "sobol", "grandmaster"})
    InstallPlugin(kind, "slow_starts");
  const json start = Examine("dsdr", "", 2).at("start");
  EXPECT_EQ(json(), start.at("problem"));
  EXPECT_LE(3.2, start.at("seconds"));
  ASSERT_EQ(1U, start.at("warnings").size());
  for (const char* kind : {"dsdr", "accord", "sobol", "grandmaster"}) {
    EXPECT_THAT(Text(start.at("warnings")[0]),
                ContainsRegex("librng" + std::string(kind) + "\\.so takes (0\\.[89]|[1-9])"));
  }
}

// The start takes 1.5 s, the report 1 s.
TEST_F(Doctor, AReportHasOneLimitTogetherWithTheStart) {
  InstallPlugin("dsdr", "slow_steps");
  const json row = ExamineKind("dsdr", "", 2);
  EXPECT_THAT(row.at("warnings").dump(), HasSubstr("did not answer within 2 s"));
}

TEST_F(Doctor, AReportThatBreaksTheContractIsAWarning) {
  InstallBreaking("report_is_malformed");
  const json row = ExamineKind("dsdr");
  EXPECT_EQ(1U, row.at("devices").size());
  EXPECT_EQ(json({"Line 2 of its device report repeats the identifier \"R1\"."}),
            row.at("warnings"));
}

TEST_F(Doctor, AReportThatChangesItsSizeIsAWarning) {
  InstallBreaking("report_size_differs");
  EXPECT_EQ(json({"Its device report has 10 bytes in the first call and 20 in the second."}),
            ExamineKind("dsdr").at("warnings"));
}
