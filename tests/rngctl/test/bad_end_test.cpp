// Generators that cannot be tested, and what "rngctl test" leaves behind.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

using BadEnd = std::pair<std::string, std::string>;  // what the plug-in does, and the message

class RngctlTestBadEnd : public RngctlTest, public testing::WithParamInterface<BadEnd> {};

TEST_P(RngctlTestBadEnd, IsNoVerdict) {
  const auto [variant, message] = GetParam();
  InstallPlugin("dsdr", variant);
  const Result result = RunShell("RNG_THROW_IN_DRAW=1 " + Rngctl() +
                                 " test dsdr -n 5000 --json --picture " + TreePath("picture.png"));
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("", result.output);
  EXPECT_THAT(result.errors, HasSubstr("rngctl: " + message));
  EXPECT_FALSE(fs::exists(TreePath("picture.png")));
}

INSTANTIATE_TEST_SUITE_P(
    Each, RngctlTestBadEnd,
    testing::Values(
        BadEnd("failing_device", "The generator \"dsdr\" failed after 0 bytes.\n"),
        BadEnd("breaking/runs_out", "The generator \"dsdr\" failed after 992 bytes.\n"),
        BadEnd("drawing/ForgeTheEnd", "A plug-in interfered with the draw: 32 bytes arrived.\n"),
        BadEnd("drawing/Exit", "A plug-in exited with status 0.\n"),
        BadEnd("drawing/ExitAtOnce", "A plug-in exited with status 0.\n"),
        BadEnd("drawing/ExitWithChild", "A plug-in exited with status 0.\n"),
        BadEnd("drawing/Crash", "A plug-in crashed with signal 11 (Segmentation fault).\n"),
        BadEnd("drawing/KillItself", "A plug-in crashed with signal 9 (Killed).\n"),
        BadEnd("drawing/EndThread", "A plug-in crashed with signal 6 (Aborted).\n"),
        BadEnd("drawing/CloseAll", "A plug-in exited with status 1.\n"),
        BadEnd("drawing/Wait", "A plug-in did not answer within 10 s.\n"),
        BadEnd("breaking/factory_hangs", "A plug-in did not answer within 20 s.\n"),
        BadEnd("throws_own_class", "A plug-in or the system failed: a fault of its own\n"),
        BadEnd("throwing_start", "A plug-in or the system failed"),
        BadEnd("breaking/unavailable", "There is no usable generator \"dsdr\"")),
    [](const auto& instance) {
      std::string name = fs::path(instance.param.first).filename();
      std::erase(name, '_');
      return name;
    });

TEST_F(RngctlTest, TestWithoutDefaultIsNoVerdict) {
  const Result result = Run("test -n 100");
  EXPECT_EQ(3, result.status);
  EXPECT_THAT(result.errors, StartsWith("rngctl: No usable default generator is configured."));
}

TEST_F(RngctlTest, AReportThatCannotBeWrittenIsNoVerdict) {
  const Result result = Run("test unixdev -n 100 --restarts 0 >/dev/full");
  EXPECT_EQ(3, result.status);
  EXPECT_THAT(result.errors, HasSubstr("Cannot write to standard output"));
}

TEST_F(RngctlTest, WithoutItsPictureThereIsNoReport) {
  const Result result = Run("test unixdev -n 100 --restarts 0 --picture /dev/full");
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("", result.output);
  EXPECT_EQ("rngctl: Cannot write to \"/dev/full\": No space left on device.\n", result.errors);
}

TEST_F(RngctlTest, WhatAPluginPrintsIsNotInTheReportOfItsTest) {
  InstallPlugin("dsdr", "drawing/Print");
  const Result result = Run("test dsdr -n 5000 --restarts 0 --json");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("dsdr", nlohmann::json::parse(result.output).at("generator"));
  EXPECT_EQ("a message\n", result.errors);
}

TEST_F(RngctlTest, AnInterruptedTestLeavesNothing) {
  InstallPlugin("dsdr", "drawing/Wait");
  fs::create_directory(TreePath("pictures"));
  const std::string test =
      "env --default-signal " + Rngctl() + " test dsdr --picture " + TreePath("pictures/picture");
  for (const char* signal : {"INT", "TERM", "HUP", "QUIT"}) {
    const Result result =
        RunShell(test + " & until ls " + TreePath("pictures/picture.*") +
                 "; do sleep 0.01; done >/dev/null 2>&1; kill -" + signal + " $!; wait $!");
    EXPECT_LT(128, result.status) << signal;
    EXPECT_EQ("", result.output) << signal;
    EXPECT_TRUE(fs::is_empty(TreePath("pictures"))) << signal;
    while (CountProcessesOf(Rngctl()) != 0) ::usleep(1000);
  }
}

TEST_F(RngctlTest, InterruptedRestartsLeaveNothing) {
  InstallPlugin("dsdr", "drawing/WaitsInThirdStart");
  fs::create_directory(TreePath("pictures"));
  const std::string starts = TreePath("starts");
  const Result result = RunShell("RNG_TEST_STARTS=" + starts + " env --default-signal " + Rngctl() +
                                 " test dsdr -n 100 --picture " + TreePath("pictures/picture") +
                                 " & until grep -q xxxx " + starts +
                                 "; do sleep 0.01; done 2>/dev/null; kill -INT $!; wait $!");
  EXPECT_EQ(128 + SIGINT, result.status);
  EXPECT_TRUE(fs::is_empty(TreePath("pictures")));
  while (CountProcessesOf(Rngctl()) != 0) ::usleep(1000);
}

TEST_F(RngctlTest, RestartsNeedTheNullDevice) {
  const std::string emptyDev =
      "unshare --map-root-user --mount sh -c 'mount -t tmpfs none /dev && ";
  if (RunShell(emptyDev + "true'").status != 0) {
    GTEST_SKIP() << "this machine allows no mount namespace with an empty /dev";
  }
  const Result result =
      RunShell(emptyDev + "exec " + Rngctl() + " test unixdev -n 100 --restarts 2'");
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("rngctl: rngctl needs /dev/null to start a process. Fix: mount /dev.\n", result.errors);
}

// A handler that removes the picture belongs to the parent alone.
TEST_F(RngctlTest, AHelperOfAPluginThatIsTerminatedLeavesThePicture) {
  InstallPlugin("dsdr", "drawing/LoseHelper");
  const Result result = Run("test dsdr -n 5000 --restarts 0 --picture " + TreePath("picture.png"));
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_TRUE(fs::exists(TreePath("picture.png")));
}

// --- Usage

TEST_F(RngctlTest, TestRefusesWrongNumbers) {
  for (const char* arguments :
       {"-n 0", "-n -1", "-n 1k", "-n 2000000000000", "--restarts -1", "--restarts many",
        "--device \"\"", "--picture \"\"", "--picture -", "twice over"}) {
    EXPECT_EQ(2, Run(std::string("test ") + arguments).status) << arguments;
  }
}

TEST_F(RngctlTest, TestRefusesAPictureBeforeItDraws) {
  WriteFile(TreePath("target"), "old");
  fs::create_symlink("target", TreePath("link"));
  for (const std::string& file : {TreePath("link"), TreePath("nosuch/file"), TreePath("")}) {
    const Result result = Run("test unixdev --picture " + file);
    EXPECT_EQ(2, result.status) << file;
    EXPECT_THAT(result.errors, StartsWith("rngctl: Cannot write to ")) << file;
    EXPECT_EQ("", result.output) << file;
  }
  EXPECT_EQ("old", ReadFile(TreePath("target")));
}

TEST_F(RngctlTest, TestWritesNoPictureIntoTheReportOrOntoATerminal) {
  for (const char* file : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
    const Result result = Run(std::string("test unixdev -n 100 --restarts 0 --picture ") + file);
    EXPECT_EQ(2, result.status) << file;
    EXPECT_EQ("rngctl: A picture is not written to standard output.\n", result.errors) << file;
    EXPECT_EQ("", result.output) << file;
  }
  const Result result =
      RunShell("script -qec '" + Rngctl() +
               " test unixdev -n 100 --restarts 0 --picture /dev/tty >/dev/null' " +
               TreePath("typescript") + " </dev/null");
  EXPECT_EQ("rngctl: A picture is not written to a terminal.\r\n", result.output);
  EXPECT_EQ(2, result.status);
}

TEST_F(RngctlTest, TestDoesNotReplaceAPictureOfAnotherUser) {
  WriteFile(TreePath("theirs"), "old");
  const bool isGivenAway = ::chown(TreePath("theirs").c_str(), 4711, 4711) == 0;
  const std::string picture = isGivenAway ? TreePath("theirs") : "/etc/passwd";
  const Result result = Run("test unixdev -n 100 --restarts 0 --picture " + picture);
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.errors, EndsWith(std::string(": it belongs to another user (UID ") +
                                      (isGivenAway ? "4711" : "0") + ").\n"));
  EXPECT_EQ("old", ReadFile(TreePath("theirs")));
}

// --- Devices

TEST_F(RngctlTest, TestSelectsTheDevice) {
  InstallPlugin("dsdr", "drawing/NamesItsDevice");
  const Result wrong = Run("test dsdr --device r3 -n 100 --restarts 0");
  EXPECT_EQ(3, wrong.status);
  EXPECT_THAT(wrong.errors,
              StartsWith("rngctl: The generator \"dsdr\" refuses the device \"r3\".\n"));
  // The draws of the restarts have the name of the device, so they are all alike.
  EXPECT_THAT(Run("test dsdr --device r2 -n 100 --restarts 2").output,
              HasSubstr("Starts 1 and 2 of 2 gave the same bytes"));
  EXPECT_EQ(0, Run("test dsdr --device rr -n 100 --restarts 2").status);
}

TEST_F(RngctlTest, TestReportsTheDevice) {
  InstallPlugin("dsdr", "drawing/NamesItsDevice");
  const std::string arguments = "test dsdr -n 10 --restarts 0 --device ";
  EXPECT_EQ("r2", nlohmann::json::parse(Run(arguments + "r2 --json").output).at("device"));
  EXPECT_THAT(Run(arguments + "r1").output, HasSubstr("\ndevice      r1\n"));
  InstallPlugin("dsdr", "reports_devices");  // does not say which one is in use
  EXPECT_THAT(Run(arguments + "R1").output, HasSubstr("\ndevice      R1\n"));
}

TEST_F(RngctlTest, TestShortensLongTexts) {
  const auto startOf = [](const std::string& text) { return text.substr(0, 4096) + "..."; };
  InstallPlugin("dsdr", "drawing/LongTexts");
  const Result result = Run("test dsdr -n 100 --restarts 2 --json");
  ASSERT_EQ(0, result.status) << result.errors;
  const nlohmann::json report = nlohmann::json::parse(result.output);
  EXPECT_EQ(startOf(std::string(4097, 'x')), report.at("description"));
  EXPECT_EQ(startOf(std::string(4097, 'x')), report.at("device"));
  InstallPlugin("dsdr", "breaking/takes_every_device");  // and reports none
  const std::string device(100000, 'y');
  const Result other = Run("test dsdr -n 100 --restarts 0 --json --device " + device);
  ASSERT_EQ(0, other.status) << other.errors;
  EXPECT_EQ(startOf(device), nlohmann::json::parse(other.output).at("device"));
}

// --- A terminal

TEST_F(RngctlTest, TestShowsItsProgress) {
  InstallPlugin("dsdr", "drawing/BeSlow");  // for more than a second
  const Result result = RunShell("script -qec '" + Rngctl() +
                                 " test dsdr -n 200000 --restarts 0' " + TreePath("typescript"));
  const std::string none =
      "[" + std::string(40, ' ') + "]   0 %";  // by time, it would be over 20 %
  EXPECT_THAT(result.output, HasSubstr('\r' + none));
  EXPECT_THAT(result.output, HasSubstr("\r\033[Kgenerator   dsdr"));
}

TEST_F(RngctlTest, TestColoursItsOutcomes) {
  const Result result = RunShell("script -qec 'env -u NO_COLOR " + Rngctl() +
                                 " test unixdev -n 100 --restarts 0' " + TreePath("typescript"));
  EXPECT_THAT(result.output, HasSubstr("\n\033[32mpassed "));
  EXPECT_THAT(result.output, HasSubstr("\n\033[2mnot made "));
  InstallPlugin("dsdr", "drawing/Constant");
  const Result bad = RunShell("script -qec 'env -u NO_COLOR " + Rngctl() +
                              " test dsdr -n 100 --restarts 0' " + TreePath("typescript"));
  EXPECT_THAT(bad.output, HasSubstr("\n\033[31mfailed "));
}
