// What plug-ins find in the processes that rngctl starts for them, whichever command starts them.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>
#include <vector>

using testing::HasSubstr;
using testing::MatchesRegex;

namespace fs = std::filesystem;

namespace {

// In the folder "here", without output.
struct Command {
  std::string arguments;
  std::string environment = "";

  std::string InShell() const {
    return "cd " + TreePath("here") + "; " + environment + " " + Rngctl() + " " + arguments +
           " >/dev/null 2>&1";
  }
};

// That execute the program anew.
std::vector<Command> SpawningCommands() {
  return {{"doctor dsdr"},
          {"check --only available " + TreePath("lib/librngdsdr.so")},
          {"list"},
          {"test dsdr -n 100 --restarts 1 --picture " + TreePath("picture")}};
}

// Among them those that continue in a copy of the process.
std::vector<Command> AllCommands() {
  std::vector<Command> commands = SpawningCommands();
  for (const std::string& arguments :
       {"read dsdr -n 4 -o " + TreePath("key") + " --record " + TreePath("record"),
        "test dsdr -n 100 --restarts 0 --picture " + TreePath("picture"), std::string("default"),
        std::string("default set dsdr")}) {
    commands.push_back({arguments, "RNG_TEST_ANYWHERE=1"});
  }
  return commands;
}

class InChild : public RngctlTest {
 protected:
  void SetUp() override {
    RngctlTest::SetUp();
    fs::create_directory(TreePath("here"));
  }
  void TearDown() override { KillAll(); }  // nothing may outlast its case

  static void KillAll() {
    for (const auto& entry : fs::directory_iterator("/proc")) {
      std::error_code isNoneOrEnded;
      if (fs::read_symlink(entry.path() / "exe", isNoneOrEnded) != Rngctl()) continue;
      ::kill(std::stoi(entry.path().filename()), SIGKILL);
    }
  }

  static bool HaveAllEnded() {
    for (int i = 0; i < 2000 && CountProcessesOf(Rngctl()) > 0; ++i) ::usleep(10000);
    return CountProcessesOf(Rngctl()) == 0;
  }

  // Kills the command when there is something in the file.
  static void RunUntil(const std::string& file, const Command& command,
                       const std::string& signal = "KILL") {
    RunShell(command.InShell() + " & until test -s " + TreePath(file) +
             "; do sleep 0.01; done; kill -" + signal + " $!; wait $!");
  }

  static std::string TakeNotes() {
    const std::string notes = fs::exists(TreePath("notes")) ? ReadFile(TreePath("notes")) : "";
    fs::remove(TreePath("notes"));
    return notes;
  }
};

}  // namespace

// A script may read a list and run the tool for each line.
TEST_F(InChild, APluginReadsNothingFromStandardInput) {
  InstallPlugin("dsdr", "in_child/ReadInput");
  WriteFile(TreePath("input"), "typed");
  for (const Command& command : SpawningCommands()) {
    const Result result =
        RunShell("exec <" + TreePath("input") + "; " + command.InShell() + "; cat");
    EXPECT_EQ("typed", result.output) << command.arguments;
    EXPECT_THAT(TakeNotes(), MatchesRegex("(0 bytes\n)+")) << command.arguments;
  }
}

TEST_F(InChild, ACrashLeavesNoCoreFile) {
  if (RunShell("ulimit -Hc").output == "0\n") GTEST_SKIP() << "core files are not allowed here";
  InstallPlugin("dsdr", "in_child/Crash");
  for (const Command& command : AllCommands()) {
    RunShell("ulimit -Sc $(ulimit -Hc); " + command.InShell());
    EXPECT_THAT(TakeNotes(), MatchesRegex("(up to 0, at most 0\n)+")) << command.arguments;
    EXPECT_TRUE(fs::is_empty(TreePath("here"))) << command.arguments;
  }
}

// They could hang or crash after a complete report.
TEST_F(InChild, TheProcessThatReadsAReportRunsNoExitHandlers) {
  InstallPlugin("dsdr", "in_child/NoteItsEnd");
  EXPECT_EQ(0, Run("list").status);
  EXPECT_EQ("begins\n", TakeNotes());
}

TEST_F(InChild, AChildEndsWhenTheToolIsKilled) {
  InstallPlugin("dsdr", "in_child/Hang");
  for (const Command& command : AllCommands()) {
    RunUntil("notes", command);
    ASSERT_TRUE(HaveAllEnded()) << command.arguments;
    EXPECT_EQ("hangs\n", TakeNotes()) << command.arguments;
  }
}

// The parent catches the signal a moment after the copy has begun to run.
TEST_F(InChild, ACopyOfTheProcessHearsOfASignal) {
  InstallPlugin("dsdr", "in_child/TellOfSignals");
  for (const char* arguments : {"default", "default set dsdr", "test dsdr -n 100 --restarts 0"}) {
    const Command command{arguments, "RNG_TEST_ANYWHERE=1 exec"};
    RunShell("(" + command.InShell() + ") & until test -s " + TreePath("notes") +
             "; do sleep 0.01; done; for i in $(seq 500); do grep -q \"SigCgt:.*[4-7c-f]...$\" "
             "/proc/$!/status && break; sleep 0.01; done; kill $!; wait $!");
    EXPECT_EQ("waits\nterminated\n", TakeNotes()) << arguments;
  }
}

// It cannot be told of the end of its parent any more.
TEST_F(InChild, AProcessWhoseParentHasAlreadyEndedRunsNoPlugin) {
  InstallPlugin("dsdr", "in_child/Hang");
  for (Command command : AllCommands()) {
    command.environment += " LD_PRELOAD=" FAKE_LIBS_DIR "/delays_children.so";
    RunUntil("started", command);
    ASSERT_TRUE(HaveAllEnded()) << command.arguments;
    EXPECT_EQ("", TakeNotes()) << command.arguments;
    fs::remove(TreePath("started"));
  }
}

TEST_F(InChild, AProgramThatAPluginRunsInheritsNoDescriptorOfTheTool) {
  InstallPlugin("dsdr", "in_child/ListDescriptors");
  WriteFile(TreePath(kSettingsFile), "");  // so that "rngctl default" locks its folder
  const auto runOnTerminal = [](const std::string& command) {  // whose settings the tool restores
    return RunShell("script -qec '" + command + "' " + TreePath("typescript")).output;
  };
  std::string usual = runOnTerminal("ls -x /proc/self/fd | cat");
  std::erase(usual, '\r');
  std::vector<Command> commands = AllCommands();
  commands.push_back({"list --json", "RNG_TEST_ANYWHERE=1"});
  for (const Command& command : commands) {
    runOnTerminal("export RNG_TEST_NAME=1; " + command.InShell());
    EXPECT_THAT(TakeNotes(), MatchesRegex("(" + usual + ")+")) << command.arguments;
  }
}

TEST_F(InChild, APluginMayPrintMoreThanAPipeHolds) {
  InstallPlugin("dsdr", "in_child/FillPipes");
  for (const Command& command : AllCommands()) {
    EXPECT_EQ(0, RunShell(command.InShell()).status) << command.arguments;
    EXPECT_THAT(TakeNotes(), MatchesRegex("(printed\n)+")) << command.arguments;
  }
}

TEST_F(InChild, ALineThatDoesNotEndIsReported) {
  InstallPlugin("dsdr", "in_child/FillPipes");
  const Result result = Run("check --only available --json " + TreePath("lib/librngdsdr.so"));
  for (const char* stream : {"stdout", "stderr"}) {
    const std::string line =
        std::string("\"stream\": \"") + stream + "\",\n      \"line\": \"the end\"";
    EXPECT_THAT(result.output, HasSubstr(line)) << stream;
  }
}

TEST_F(InChild, WhatAProcessSendsJustBeforeItsEndIsReceived) {
  InstallPlugin("dsdr", "stub");
  const Result result = RunShell("LD_PRELOAD=" FAKE_LIBS_DIR "/delays_wait.so " + Rngctl() +
                                 " check --only available " + TreePath("lib/librngdsdr.so"));
  EXPECT_EQ(0, result.status) << result.output;
}

TEST_F(InChild, TheReasonOfItsEndIsKnownEvenIfASignalInterruptsTheWait) {
  InstallPlugin("dsdr", "breaking/draw_crashes");
  const Result result = RunShell("LD_PRELOAD=" FAKE_LIBS_DIR "/interrupts_wait.so " + Rngctl() +
                                 " check --only draw-succeeds " + TreePath("lib/librngdsdr.so"));
  EXPECT_THAT(result.output, HasSubstr("crashed with signal 6"));
}

// --- Processes that a plug-in leaves running

// They have inherited the pipes, so these do not end with the process that is waited for.
TEST_F(InChild, AProcessThatIsLeftRunningIsNotWaitedFor) {
  InstallPlugin("dsdr", "in_child/LeaveTwoCopies");
  for (const Command& command : AllCommands()) {
    RunShell(command.InShell());
    EXPECT_EQ("", TakeNotes()) << command.arguments;
    KillAll();
  }
}

// Each check, and each of many starts, would otherwise leave another one.
TEST_F(InChild, AProcessThatIsLeftRunningEndsWithACheckAndWithAStart) {
  InstallPlugin("dsdr", "in_child/LeaveTwoCopies");
  for (const Command& command : SpawningCommands()) {
    if (command.arguments == "list" || command.arguments == "doctor dsdr") continue;
    RunShell(command.InShell());
    EXPECT_EQ(0U, CountProcessesOf(Rngctl())) << command.arguments;
  }
}

TEST_F(InChild, AProcessThatTheCallerHadStartedGoesOn) {
  InstallPlugin("dsdr", "stub");
  const std::string sleep = TreePath("sleep");
  fs::copy_file("/bin/sleep", sleep);
  for (const Command& command : SpawningCommands()) {
    const int process = std::stoi(RunShell(sleep + " 60 >/dev/null 2>&1 & echo $!; exec " +
                                           Rngctl() + " " + command.arguments + " >/dev/null 2>&1")
                                      .output);
    EXPECT_EQ(1U, CountProcessesOf(sleep)) << command.arguments;
    ::kill(process, SIGKILL);
    while (CountProcessesOf(sleep) != 0) ::usleep(1000);
  }
}

TEST_F(InChild, AProcessThatIsLeftRunningEndsWithACheckThatDoesNotEnd) {
  InstallPlugin("dsdr", "in_child/LeaveTwoCopiesAndHang");
  const std::string check = "check --only available " + TreePath("lib/librngdsdr.so");
  RunShell(Command{check + " --timeout 1"}.InShell());
  EXPECT_EQ("hangs\n", TakeNotes());
  EXPECT_EQ(0U, CountProcessesOf(Rngctl()));
  for (const char* signal : {"TERM", "HUP", "INT"}) {
    RunUntil("notes", {check, "env --default-signal"}, signal);
    EXPECT_EQ("hangs\n", TakeNotes()) << signal;
    EXPECT_EQ(0U, CountProcessesOf(Rngctl())) << signal;
  }
}

TEST_F(InChild, AnInterruptedDoctorNamesWhatIsLeftRunning) {
  InstallPlugin("dsdr", "in_child/LeaveTwoCopiesAndHang");
  const std::string errors = TreePath("errors");
  RunShell(Rngctl() + " doctor dsdr 2>" + errors + " >&2 & until test -s " + TreePath("notes") +
           "; do sleep 0.01; done; kill $!; wait $!");
  EXPECT_THAT(ReadFile(errors),
              MatchesRegex("(rngctl: Still running: exe \\(process [0-9]+\\)\n)+"));
  EXPECT_NE(0U, CountProcessesOf(Rngctl()));
}
