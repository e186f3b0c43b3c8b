#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>

using testing::HasSubstr;

namespace fs = std::filesystem;

TEST_F(Doctor, StartsTheLibraryWhateverTheRowsLookLike) {
  InstallUnixDev();
  for (const char* kind : {"", "unixdev", "dsdr"}) {
    const json start = Examine(kind).at("start");
    EXPECT_EQ(true, start.at("tried")) << kind;
    EXPECT_EQ(json(), start.at("problem")) << kind;
    EXPECT_EQ(json(), start.at("culprit")) << kind;
    EXPECT_LE(0.0, start.at("seconds")) << kind;
  }
  InstallPlugin("grandmaster", "crashing");
  InstallPlugin("accord", "exiting");
  const json start = Examine("").at("start");
  EXPECT_EQ("accord", start.at("culprit"));
  EXPECT_EQ("exited with status 7 while loading librngaccord.so", start.at("problem"));
  EXPECT_EQ(json(), start.at("seconds"));
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
  InstallPlugin("dsdr", "throwing_release");  // after the search
  EXPECT_EQ(true, Examine("").at("default").at("found"));
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
  EXPECT_EQ("loaded", dsdr.at("verdict"));
  EXPECT_EQ(true, dsdr.at("kept"));
  EXPECT_EQ(json({"Examined alone, it fails: not available. Whether it works depends on the other "
                  "plug-ins that are loaded."}),
            dsdr.at("warnings"));
  const json sobol = RowOf(report, "sobol");
  EXPECT_EQ("contradicted", sobol.at("verdict"));
  EXPECT_EQ(false, sobol.at("kept"));
  EXPECT_EQ("loaded as \"sobol\", but a start with all plug-ins does not keep it",
            sobol.at("summary"));
  EXPECT_EQ("loaded", RowOf(report, "bioqt").at("verdict"));
  EXPECT_THAT(Run("doctor").errors, HasSubstr("1 installed plug-in has a problem"));
  EXPECT_EQ(0, Run("doctor dsdr").status);
  EXPECT_EQ(1, Run("doctor sobol").status);
  // Also where the stop fails later because of another.
  InstallPlugin("accord", "throws_in_release");
  EXPECT_EQ(0, Run("doctor dsdr").status);
}

TEST_F(Doctor, AStartThatFailsNamesThePluginThatWasBeingLoaded) {
  InstallUnixDev();
  InstallPlugin("sobol", "crowded");
  InstallPlugin("accord", "crowded");
  const std::string problem = "crashed with signal 6 (Aborted) while loading librngsobol.so";
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: 1 installed plug-in has a problem. A start with all plug-ins " + problem + ".\n",
      result.errors);
  EXPECT_THAT(result.output, HasSubstr("\nStart and stop   " + problem + "\n"));
  EXPECT_THAT(result.output,
              HasSubstr("  loaded as \"sobol\", but in a start with all plug-ins it crashed with "
                        "signal 6 (Aborted)\n"));
}

// No host gets the generator, although nothing is wrong with its plug-in.
TEST_F(Doctor, AnotherPluginThatMakesTheStartFailIsNamedWithTheKind) {
  InstallUnixDev();
  InstallPlugin("grandmaster", "crashing");
  const Result result = Run("doctor unixdev");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "rngctl: \"unixdev\": loaded as \"unixdev\", but a start with all plug-ins crashed with "
      "signal 6 (Aborted) while loading librnggrandmaster.so.\n",
      result.errors);
  EXPECT_THAT(result.output, HasSubstr("\nstart, warning: The plug-in for \"grandmaster\" makes "
                                       "the start fail. Run \"rngctl doctor grandmaster\""));
  const json report = Examine("unixdev");
  EXPECT_EQ("grandmaster", report.at("start").at("culprit"));
  EXPECT_EQ(1U, report.at("generators").size());
}

TEST_F(Doctor, APluginThatHangsTheStartIsWaitedForOnce) {
  InstallUnixDev();
  InstallPlugin("sobol", "hanging");
  const json start = Examine("unixdev", "", 1).at("start");
  EXPECT_EQ("sobol", start.at("culprit"));
  EXPECT_EQ("did not answer within 1 s while loading librngsobol.so", start.at("problem"));
}

TEST_F(Doctor, ACallThatWouldDeadlockTheStartIsNamed) {
  InstallUnixDev();
  InstallPlugin("dsdr", "breaking/calls_initialize");
  const json start = Examine("unixdev").at("start");
  EXPECT_EQ("dsdr", start.at("culprit"));
  EXPECT_EQ("deadlocks because a plug-in calls Initialize while loading librngdsdr.so",
            start.at("problem"));
  EXPECT_EQ(1, Run("doctor unixdev").status);
}

TEST_F(Doctor, ADisplayThatMakesTheStartFailIsTheCulprit) {
  InstallUnixDev();
  InstallX11("crashing");
  const json start = Examine("unixdev").at("start");
  EXPECT_EQ("display", start.at("culprit"));
  EXPECT_EQ("crashed with signal 6 (Aborted) while looking for the X display", start.at("problem"));
  EXPECT_EQ(1, Run("doctor unixdev").status);
}

// Programs get their generators before the stop, so only the culprit is at fault.
TEST_F(Doctor, AStopThatFailsDoesNotKeepAHostFromOtherGenerators) {
  InstallUnixDev();
  InstallPlugin("dsdr", "throwing_release");
  const json report = Examine("");
  EXPECT_EQ("threw an exception during the stop", report.at("start").at("problem"));
  EXPECT_EQ("dsdr", report.at("start").at("culprit"));
  EXPECT_EQ("dsdr", Examine("unixdev").at("start").at("culprit"));
  EXPECT_EQ(0, Run("doctor unixdev").status);
  EXPECT_EQ(1, Run("doctor dsdr").status);
}

// The library closes the file of one plug-in and then releases the next.
TEST_F(Doctor, AStopThatFailsIsNotBlamedOnThePluginThatWasClosedBefore) {
  InstallPlugin("dsdr", "stub");
  InstallPlugin("accord", "throws_in_release");
  const json start = Examine("").at("start");
  EXPECT_EQ("threw an exception during the stop", start.at("problem"));
  EXPECT_EQ("accord", start.at("culprit"));
}

TEST_F(Doctor, AmongTwoPluginsThatFailAloneNoneIsTheCulprit) {
  InstallPlugin("dsdr", "disturbing/Flags_Crash");
  InstallPlugin("accord", "throws_in_release");
  const json start = Examine("").at("start");
  EXPECT_EQ("crashed with signal 6 (Aborted) while listing the generators", start.at("problem"));
  EXPECT_EQ(json(), start.at("culprit"));
}

TEST_F(Doctor, ACallThatWouldDeadlockTheStopIsNamed) {
  InstallPlugin("dsdr", "breaking/calls_shut_down");
  EXPECT_EQ("deadlocks because a plug-in calls ShutDown during the stop",
            Examine("").at("start").at("problem"));
}

// What closes another plug-in matters where the start returns.
TEST_F(Doctor, AStartThatFailsIsNotBlamedOnAPluginThatClosesAnother) {
  InstallPlugin("dsdr", "stub");
  InstallPlugin("sobol", "closes_another");
  InstallPlugin("grandmaster", "crashing");
  const json start = Examine("").at("start");
  EXPECT_EQ("crashed with signal 6 (Aborted) while loading librnggrandmaster.so",
            start.at("problem"));
  EXPECT_EQ("grandmaster", start.at("culprit"));
}

TEST_F(Doctor, AListThatFailsSaysNothingOfThePluginsThatBelongInIt) {
  InstallPlugin("dsdr", "disturbing/Flags_Throw");
  InstallPlugin("EsmartGost", "nameless");
  const json row = RowOf(Examine(""), "EsmartGost");
  EXPECT_EQ("nameless", row.at("verdict"));
  EXPECT_EQ(true, row.at("kept"));
}

TEST_F(Doctor, APluginWhoseNameCrashesTheLookupIsNamed) {
  InstallUnixDev();
  InstallPlugin("accord", "crowded_name");
  InstallPlugin("sobol", "crowded_name");
  const json report = Examine("unixdev");
  EXPECT_EQ("crashed with signal 6 (Aborted) while looking up \"unixdev\"",
            report.at("start").at("problem"));
  EXPECT_EQ("sobol", report.at("start").at("culprit"));
  const json row = report.at("generators")[0];
  EXPECT_EQ("contradicted", row.at("verdict"));
  EXPECT_EQ("loaded as \"unixdev\", but GetRng(\"unixdev\") crashed with signal 6 (Aborted)",
            row.at("summary"));
  EXPECT_EQ("loaded", ExamineKind("accord").at("verdict"));  // it comes before the other
  EXPECT_EQ(0, Run("doctor accord").status);
}

// The start is repeated without the question that ended it.
TEST_F(Doctor, ADefaultThatCrashesTheStartHidesNothingElse) {
  InstallUnixDev();
  RunShell(Rngctl() + " default set unixdev");
  InstallPlugin("dsdr", "stub");
  InstallPlugin("accord", "crowded_name");
  InstallPlugin("sobol", "garbles_without_dsdr");
  InstallPlugin("EsmartGost", "crowded_name");
  const json report = Examine("");
  EXPECT_EQ("crashed with signal 6 (Aborted) during the search for the default",
            report.at("start").at("problem"));
  EXPECT_EQ(true, RowOf(report, "sobol").at("kept"));  // which only the start shows
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

// GetRng does not ask for the flags.
TEST_F(Doctor, APluginThatFailsInItsFlagsIsFoundByItsName) {
  InstallUnixDev();
  for (const auto& [way, failure] :
       {std::pair("Crash", "crashed with signal 6 (Aborted)"),
        std::pair("Throw", "threw an exception"), std::pair("Exit", "exited with status 0"),
        std::pair("Hang", "did not answer within 1 s")}) {
    InstallPlugin("dsdr", std::string("disturbing/Flags_") + way);
    const Result named = Run("doctor --json --timeout 1 dsdr");
    EXPECT_EQ(0, named.status) << way << named.errors;
    const json row = RowOf(json::parse(named.output), "dsdr");
    EXPECT_EQ("loaded", row.at("verdict")) << way;
    EXPECT_EQ("loaded as \"dsdr\"", row.at("summary"));
    EXPECT_THAT(row.at("warnings").dump(),
                HasSubstr("When asked for its capability flags, it " + std::string(failure)));
    const Result all = Run("doctor --json --timeout 1");
    EXPECT_EQ(1, all.status) << way;
    const json report = json::parse(all.output);
    EXPECT_EQ("loaded", RowOf(report, "dsdr").at("verdict")) << way;
    EXPECT_EQ("loaded", RowOf(report, "unixdev").at("verdict")) << way;
    EXPECT_EQ("dsdr", report.at("start").at("culprit")) << way;
    EXPECT_THAT(Text(report.at("start").at("problem")), HasSubstr("while listing the generators"));
    fs::remove(TreePath("lib/librngdsdr.so"));
  }
}

// FIFOs and devices are not opened: a FIFO would hang, and opening a device may have an effect.
TEST_F(Doctor, AStartThatWouldWaitForAPipeIsNotTried) {
  InstallUnixDev();
  ASSERT_EQ(0, ::mkfifo(TreePath("lib/librngdsdr.so").c_str(), 0600));
  const json report = Examine("unixdev");
  EXPECT_EQ(false, report.at("start").at("tried"));
  EXPECT_EQ("dsdr", report.at("start").at("culprit"));
  EXPECT_EQ("was not tried, because it would hang on " + TreePath("lib/librngdsdr.so"),
            report.at("start").at("problem"));
  EXPECT_EQ("loaded", RowOf(report, "unixdev").at("verdict"));
  EXPECT_EQ(1, Run("doctor unixdev").status);
}

TEST_F(Doctor, AStartGoesOnWithoutASocketInAPluginsPlace) {
  InstallUnixDev();
  RunShell("cd " + TreePath("lib") +
           " && python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind(\"librngdsdr.so\")'");
  const json report = Examine("");
  EXPECT_EQ("cannot-be-opened", RowOf(report, "dsdr").at("verdict"));
  EXPECT_EQ(json(), report.at("start").at("problem"));
  EXPECT_EQ("loaded", RowOf(report, "unixdev").at("verdict"));
}

// Without a display, a start opens no plug-in that needs one.
TEST_F(Doctor, ATerminalThatNoStartOpensPreventsNone) {
  InstallUnixDev();
  fs::create_symlink("/dev/tty", TreePath("lib/librngbioqt.so"));
  const json report =
      json::parse(RunShell("setsid -w " + Rngctl() + " doctor --json").output, nullptr, false);
  EXPECT_EQ("no-display", RowOf(report, "bioqt").at("verdict"));
  EXPECT_EQ(true, report.at("start").at("tried"));
  EXPECT_EQ(json(), report.at("start").at("problem"));
}

TEST_F(Doctor, APipeThatNoStartOpensIsNotOpened) {
  InstallUnixDev();
  ASSERT_EQ(0, ::mkfifo(TreePath("lib/librngbioqt.so").c_str(), 0600));
  EXPECT_EQ(json(), Examine("unixdev").at("start").at("problem"));
}

TEST_F(Doctor, TheFirstOfSeveralPipesIsTheCulprit) {
  ASSERT_EQ(0, ::mkfifo(TreePath("lib/librngdsdr.so").c_str(), 0600));
  ASSERT_EQ(0, ::mkfifo(TreePath("lib/librngsobol.so").c_str(), 0600));
  const json start = Examine("dsdr").at("start");
  EXPECT_EQ("dsdr", start.at("culprit"));
  EXPECT_THAT(Text(start.at("problem")), HasSubstr("hang on " + TreePath("lib/librngdsdr.so")));
}

TEST_F(Doctor, APluginThatFailsAtTheConfiguredDeviceIsTheCulprit) {
  InstallUnixDev();
  InstallPlugin("dsdr", "disturbing/Device_Crash");
  WriteFile(TreePath(kSettingsFile),
            "[Devices]\nRandomNumberGeneratorType=dsdr\nRandomNumberGeneratorHardwareID=A1\n");
  const json start = Examine("").at("start");
  EXPECT_EQ(
      "crashed with signal 6 (Aborted) while librngdsdr.so was selecting the configured device",
      start.at("problem"));
  EXPECT_EQ("dsdr", start.at("culprit"));
}

TEST_F(Doctor, APluginThatWorksOnlyBesideOthersHasItsName) {
  InstallPlugin("dsdr", "sociable");
  InstallPlugin("sobol", "sociable");
  InstallX11("whole");
  InstallPlugin("bioqt");
  EXPECT_EQ("dsdr", RowOf(Examine(""), "dsdr").at("name"));
}

TEST_F(Doctor, APluginWhoseNameCrashesBesideAnotherIsTheCulprit) {
  InstallPlugin("accord", "crowded_name");
  InstallPlugin("sobol", "crowded_name");
  const json start = Examine("").at("start");
  EXPECT_EQ("crashed with signal 6 (Aborted) while asking librngsobol.so for its name",
            start.at("problem"));
  EXPECT_EQ("sobol", start.at("culprit"));
}

// Nothing is locked between the start and the stop.
TEST_F(Doctor, ACallThatWouldStopTheLibraryIsNamed) {
  InstallPlugin("dsdr", "shuts_down_in_name");
  EXPECT_EQ("is undone because a plug-in calls ShutDown while looking up \"dsdr\"",
            Examine("dsdr").at("start").at("problem"));
}
