#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::HasSubstr;

namespace fs = std::filesystem;

TEST_F(Doctor, StartsTheLibraryWhereNoPluginIsKnownToDisturbIt) {
  InstallUnixDev();
  EXPECT_EQ(json({{"tried", true}, {"problem", json()}}), Examine("").at("start"));
  EXPECT_EQ(json({{"tried", false}, {"problem", "not tried"}}), Examine("unixdev").at("start"));
  InstallPlugin("grandmaster", "crashing");
  InstallPlugin("accord", "exiting");
  EXPECT_EQ(json({{"tried", false}, {"problem", "not tried because of accord, grandmaster"}}),
            Examine("").at("start"));
}

TEST_F(Doctor, SaysWhatASearchForTheDefaultComesTo) {
  InstallUnixDev();
  InstallPlugin("sobol", "nameless");  // with a negative size
  ASSERT_EQ(0, RunShell(Rngctl() + " default set dsdr || true").status);
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=unixdev\n");
  const json report = Examine("");
  EXPECT_EQ(false, report.at("default").at("found"));
  EXPECT_EQ("threw an exception during the search for the default",
            report.at("start").at("problem"));
}

TEST_F(Doctor, DoesNotKnowOfADefaultThatIsNotLookedFor) {
  InstallUnixDev();
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=unixdev\n");
  InstallPlugin("dsdr", "throwing_release");
  EXPECT_EQ(json(), Examine("").at("default").at("found"));
  fs::remove(TreePath("lib/librngdsdr.so"));
  InstallPlugin("sobol", "hanging");  // or slow: the limit is the doctor's
  EXPECT_EQ(json(), Examine("", "", 1).at("default").at("found"));
}

TEST_F(Doctor, TheStartIsRightWherePluginsAnswerOtherwiseBesideOthers) {
  InstallX11("whole");
  InstallPlugin("bioqt");
  InstallPlugin("dsdr", "sociable");
  InstallPlugin("sobol", "sociable");
  const json report = Examine("");
  const json dsdr = RowOf(report, "dsdr");
  EXPECT_EQ("contradicted", dsdr.at("verdict"));
  EXPECT_EQ(true, dsdr.at("kept"));
  EXPECT_EQ("not available, but a start with all plug-ins keeps " + TreePath("lib/librngdsdr.so"),
            dsdr.at("summary"));
  const json sobol = RowOf(report, "sobol");
  EXPECT_EQ("contradicted", sobol.at("verdict"));
  EXPECT_EQ(false, sobol.at("kept"));
  EXPECT_EQ("loaded as \"sobol\", but a start with all plug-ins does not keep it",
            sobol.at("summary"));
  EXPECT_EQ("loaded", RowOf(report, "bioqt").at("verdict"));
  EXPECT_THAT(Run("doctor").errors, HasSubstr("2 installed plug-ins have problems"));
}

TEST_F(Doctor, AStartThatDoesNotGoWellIsANegativeAnswer) {
  InstallUnixDev();
  InstallPlugin("sobol", "crowded");
  InstallPlugin("accord", "crowded");
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: A start with all plug-ins crashed with signal 6 (Aborted) during the start.\n",
            result.errors);
  EXPECT_THAT(result.output,
              HasSubstr("\nStart and stop   crashed with signal 6 (Aborted) during the "
                        "start\n"));
}

TEST_F(Doctor, FindsNoDefaultBehindAPluginThatEndsEveryStart) {
  InstallUnixDev();
  RunShell(Rngctl() + " default set unixdev");
  EXPECT_EQ(true, Examine("").at("default").at("found"));
  InstallPlugin("dsdr", "throwing_start");
  EXPECT_EQ(false, Examine("").at("default").at("found"));
  fs::remove(TreePath("lib/librngdsdr.so"));
  InstallPlugin("grandmaster", "crashing");
  EXPECT_EQ(false, Examine("").at("default").at("found"));
}

// Its file is in the process after the start, and yet the start does not keep it.
TEST_F(Doctor, APluginThatOnlyStaysInTheProcessIsNotKept) {
  InstallPlugin("dsdr", "sticky_unavailable");
  const json row = RowOf(Examine(""), "dsdr");
  EXPECT_EQ("not-available", row.at("verdict"));
  EXPECT_EQ(false, row.at("kept"));
}
