// What plug-ins do to the process that tries them, and what users do to that process.

#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/process.h"

#include <csignal>
#include <gmock/gmock.h>

using testing::StartsWith;

namespace fs = std::filesystem;

TEST_F(Doctor, APluginThatStopsItsProcessIsReportedWithTheSignal) {
  InstallPlugin("dsdr", "stops_itself");
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("stopped", row.at("verdict"));
  EXPECT_EQ("was stopped by signal 19 (Stopped (signal)) when asked whether it is available",
            row.at("summary"));
}

TEST_F(Doctor, APluginMayUseTheTerminal) {
  InstallPlugin("dsdr", "uses_terminal");
  const std::string report = TreePath("report");
  RunShell("script -qec '" + Rngctl() + " doctor dsdr --timeout 5 --json >" + report + "' " +
           TreePath("typescript"));
  EXPECT_EQ("loaded", RowOf(json::parse(ReadFile(report)), "dsdr").at("verdict"));
}

TEST_F(Doctor, APluginMayTakeTheLowDescriptors) {
  InstallPlugin("dsdr", "reopens_descriptors");
  EXPECT_EQ("loaded", ExamineKind("dsdr").at("verdict"));
}

TEST_F(Doctor, AnExceptionOfThePluginsOwnClassIsPutIntoWords) {
  InstallPlugin("dsdr", "throws_own_class");
  EXPECT_EQ("threw an exception when asked whether it is available: a fault of its own",
            ExamineKind("dsdr").at("summary"));
  EXPECT_EQ("threw an exception when asked whether it is available",
            ExamineKind("dsdr", "RNG_THROW_NULL=1").at("summary"));
}

namespace {

// Each of them is named, and keeps running until this function ends it.
void EndLeftProcesses(const json& processes, std::size_t count) {
  EXPECT_EQ(count, processes.size());
  EXPECT_EQ(count, CountProcessesOf(TreePath("sleep")));
  const std::string mark = "sleep (process ";
  for (const std::string process : processes) {
    ASSERT_THAT(process, StartsWith(mark));
    EXPECT_EQ(0, ::kill(std::stoi(process.substr(mark.size())), SIGKILL));
  }
}

}  // namespace

// It may be a service that other programs share by now.
TEST_F(Doctor, ProcessesThatAreLeftRunningAreNamedAndLive) {
  InstallPlugin("dsdr", "leaves_process");
  fs::copy_file("/bin/sleep", TreePath("sleep"));
  const json report = Examine("dsdr");
  const json row = RowOf(report, "dsdr");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_THAT(Text(row.at("warnings")[0]), StartsWith("It leaves a process running: sleep (pro"));
  EndLeftProcesses(report.at("left_running"), 2);  // alone, and in the start
  const std::string text = Run("doctor dsdr").output;
  EXPECT_THAT(
      text,
      testing::ContainsRegex(
          "\nstill running: sleep \\(process [0-9]+\\)\\. End it if nothing else uses it\\.\n"));
  RunShell("pkill -KILL -f ^" + TreePath("sleep"));
}

TEST_F(Doctor, AProcessThatIsLeftByADeviceReportLives) {
  InstallPlugin("dsdr", "reports_and_leaves_process");
  fs::copy_file("/bin/sleep", TreePath("sleep"));
  EndLeftProcesses(Examine("dsdr").at("left_running"), 3);
}

TEST_F(Doctor, NeedsNoMoreThanItIsGiven) {
  InstallPlugin("dsdr", "stub");
  for (const char* around : {"env --ignore-signal=CHLD", "exec 3>&- 4>&-;", "exec 3</dev/null;",
                             "exec 0<&- 3>&-;", "ulimit -n 16;"}) {
    const Result result = RunShell(std::string(around) + " " + Rngctl() + " doctor dsdr --json");
    EXPECT_EQ(0, result.status) << around << result.errors;
    EXPECT_EQ("loaded", RowOf(json::parse(result.output, nullptr, false), "dsdr").at("verdict"))
        << around;
  }
}

TEST_F(Doctor, ClosedStandardDescriptorsAreNotTakenForItsOwn) {
  InstallPlugin("dsdr", "stub");
  const std::string file = TreePath("report");
  EXPECT_EQ(
      0, RunShell("exec 0<&- 2>&- 3>&-; exec " + Rngctl() + " doctor dsdr --json >" + file).status);
  EXPECT_EQ("loaded", RowOf(json::parse(ReadFile(file), nullptr, false), "dsdr").at("verdict"));
}

TEST_F(Doctor, ASignalEndsItAndTheChildThatHangs) {
  InstallPlugin("sobol", "hanging");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // A shell ignores SIGINT for what it runs in the background.
    const Result result = RunShell("env --default-signal=INT " + Rngctl() +
                                   " doctor sobol --timeout 30 & sleep 1; kill -" +
                                   std::to_string(signal) + " $!; wait $!");
    EXPECT_EQ(128 + signal, result.status);
    EXPECT_EQ(0U, CountProcessesOf(Rngctl())) << signal;
  }
}

TEST_F(Doctor, ItsHiddenCommandIsForItself) {
  for (const std::string channel : {"", " x", " 77", " 0", " -1"}) {
    const Result result = Run("doctor-child" + channel);
    EXPECT_EQ(2, result.status) << channel;
    EXPECT_THAT(result.errors, StartsWith("rngctl: ")) << channel;
  }
}

TEST_F(Doctor, ChildrenThatCannotStartAreReportedWithTheRest) {
  InstallPlugin("dsdr", "stub");
  const Result result =
      RunShell("LD_PRELOAD=" FAKE_LIBS_DIR "/ends_children.so " + Rngctl() + " doctor --json");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: The examination of the search order crashed with signal 6 (Aborted).\n",
            result.errors);
  const json report = json::parse(result.output, nullptr, false);
  const json row = RowOf(report, "dsdr");
  EXPECT_EQ("crashed", row.at("verdict"));
  EXPECT_EQ("crashed with signal 6 (Aborted) before it was opened", row.at("summary"));
  EXPECT_EQ("the known-path service crashed with signal 6 (Aborted)",
            report.at("settings").at("problem"));
}

TEST_F(Doctor, ACallWhileTheProcessExitsSpoilsNoAnswer) {
  InstallPlugin("dsdr", "breaking/calls_at_exit");
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("calls-back", row.at("verdict"));
  EXPECT_EQ("dsdr", row.at("name"));
  EXPECT_EQ(TreePath("lib/librngdsdr.so"), row.at("file"));
}

TEST_F(Doctor, SaysWhatToDoWithTooFewDescriptors) {
  const Result result = RunShell("ulimit -n 6; exec " + Rngctl() + " doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, testing::HasSubstr("Fix: allow more with ulimit -n"));
}

TEST_F(Doctor, SaysWhichExceptionEndsAProcess) {
  InstallPlugin("dsdr", "breaking/opening_throws");
  const json thrown = ExamineKind("dsdr");
  EXPECT_EQ("threw", thrown.at("verdict"));
  EXPECT_EQ("threw an exception while being opened: no device", thrown.at("summary"));
  fs::remove(TreePath("lib/librngdsdr.so"));
  InstallPlugin("dsdr", "disturbing/ThrowInAThread");
  EXPECT_THAT(Text(ExamineKind("dsdr").at("summary")),
              StartsWith("crashed with signal 6 (Aborted; uncaught exception: no device)"));
  fs::remove(TreePath("lib/librngdsdr.so"));
  InstallPlugin("dsdr", "disturbing/Terminate");
  EXPECT_THAT(Text(ExamineKind("dsdr").at("summary")),
              StartsWith("crashed with signal 6 (Aborted; it called std::terminate)"));
}

// Without /proc the loader does not find the library by its run path, which begins with $ORIGIN.
TEST_F(Doctor, SaysThatItNeedsProc) {
  const std::string emptyProc =
      "unshare --map-root-user --mount sh -c 'mount -t tmpfs none /proc && ";
  if (RunShell(emptyProc + "true'").status != 0) {
    GTEST_SKIP() << "this machine allows no mount namespace with an empty /proc";
  }
  const Result result =
      RunShell(emptyProc + "LD_LIBRARY_PATH=" + TreePath("lib") + " exec " + Rngctl() + " doctor'");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: rngctl needs /proc to start a process. Fix: mount /proc.\n", result.errors);
}

TEST_F(Doctor, AStartWhoseProcessCannotStartSaysHowThatEnded) {
  const Result result =
      RunShell("LD_PRELOAD=" FAKE_LIBS_DIR "/ends_children.so " + Rngctl() + " doctor --json");
  EXPECT_EQ("crashed with signal 6 (Aborted) before it tried any plug-in",
            json::parse(result.output, nullptr, false).at("start").at("problem"));
}
