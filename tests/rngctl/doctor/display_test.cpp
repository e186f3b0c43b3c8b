#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"
#include "tests/support/x_server.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <ostream>

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

struct Display {
  const char* name;
  const char* library;
  const char* environment;
  std::string reason;  // a part of it
  std::string fix;
};

void PrintTo(const Display& instance, std::ostream* out) { *out << instance.name; }

class DoctorDisplay : public Doctor, public testing::WithParamInterface<Display> {};

}  // namespace

TEST_P(DoctorDisplay, TellsWhyThereIsNone) {
  const Display& expected = GetParam();
  InstallX11(expected.library);
  InstallPlugins({"bioqt", "biokbd"});
  const json report = Examine("", expected.environment);
  const std::string reason = Text(report.at("display").at("reason"));
  EXPECT_FALSE(report.at("display").at("found"));
  EXPECT_FALSE(report.at("display").at("ends_processes"));
  EXPECT_THAT(reason, HasSubstr(expected.reason));
  const json row = RowOf(report, "bioqt");
  EXPECT_EQ("no-display", row.at("verdict"));
  EXPECT_EQ("skipped because there is no X display: " + reason, row.at("summary"));
  EXPECT_EQ(expected.fix, report.at("display").at("fix"));
  EXPECT_EQ(expected.fix, row.at("fix"));
  EXPECT_EQ(TreePath("lib/librngbioqt.so"), row.at("file"));
  EXPECT_EQ("not-installed", RowOf(report, "unixx11").at("verdict"));
  EXPECT_EQ("loaded", RowOf(report, "biokbd").at("verdict"));
}

INSTANTIATE_TEST_SUITE_P(
    With, DoctorDisplay,
    testing::Values(
        Display{"NoOpen", "no_open", "DISPLAY=:7", "/lib/libX11.so.6 lacks XOpenDisplay",
                "Replace that file with the system's X client library."},
        Display{"NoClose", "no_close", "DISPLAY=:7", "/lib/libX11.so.6 lacks XCloseDisplay",
                "Replace that file with the system's X client library."},
        Display{"NoSetting", "refusing", "", "DISPLAY is not set",
                "Run this in a graphical session, or set DISPLAY to an X server."},
        Display{"EmptySetting", "refusing", "DISPLAY=", "DISPLAY is not set",
                "Run this in a graphical session, or set DISPLAY to an X server."},
        Display{"NoServer", "refusing", "DISPLAY=:7", "the X server of DISPLAY=:7 cannot be",
                "Start that server or correct DISPLAY, and make sure that this user may connect to "
                "it."},
        Display{"NoLibrary", "absent", "DISPLAY=:7", "libX11.so.6 cannot be opened: ",
                "Install the X client library (on Debian, the package libx11-6)."}),
    [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(Doctor, TriesWhatNeedsADisplayWhereThereIsOne) {
  InstallX11("whole");
  InstallPlugins({"bioqt", "unixx11"});
  const json report = Examine("");
  EXPECT_TRUE(report.at("display").at("found"));
  EXPECT_EQ("loaded", RowOf(report, "bioqt").at("verdict"));
  EXPECT_EQ("loaded", RowOf(report, "unixx11").at("verdict"));
}

TEST_F(Doctor, SeesARealServerComeAndGo) {
  fs::remove(TreePath("lib/libX11.so.6"));
  InstallPlugin("bioqt");
  XServer server;
  const std::string environment = "DISPLAY=" + server.display;
  EXPECT_EQ("loaded", ExamineKind("bioqt", environment).at("verdict"));
  server.Stop();
  EXPECT_EQ("skipped because there is no X display: the X server of " + environment +
                " cannot be reached",
            ExamineKind("bioqt", environment).at("summary"));
}

TEST_F(Doctor, SaysWhenLookingForTheDisplayEndsEveryProgram) {
  InstallX11("crashing");
  InstallPlugin("dsdr", "stub");
  const Result result = Run("doctor --json");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors,
              HasSubstr("rngctl: The library cannot be started because of the X display.\n"));
  const json report = json::parse(result.output);
  EXPECT_TRUE(report.at("display").at("ends_processes"));
  EXPECT_EQ("the process that probes for it crashed with signal 6 (Aborted)",
            report.at("display").at("reason"));
  EXPECT_EQ("loaded", RowOf(report, "dsdr").at("verdict"));
}

TEST_F(Doctor, SaysWhatToDoAboutADisplayThatEndsEveryProgram) {
  InstallX11("crashing");
  EXPECT_THAT(Run("doctor").output,
              HasSubstr("\nX display: Fix DISPLAY, the X server or libX11.so.6; until then every "
                        "program that starts the library fails the same way.\n"));
}
