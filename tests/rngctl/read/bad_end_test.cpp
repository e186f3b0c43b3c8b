// Draws of "rngctl read" that end badly. None leaves a partial file, or a partial result that looks complete.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

constexpr char kAdvice[] = "\nRun \"rngctl doctor\" to find out which.\n";

// Sends SIGTERM to "rngctl read" when its plug-in says that it waits and the parent has the bytes of the first
// draw, and prints the messages.
Result InterruptDraw() {
  const std::string log = TreePath("log");
  const std::string drawn = TreePath("drawn");
  return RunShell(Rngctl() + " read dsdr --unchecked -n 5000 2>" + log + " >" + drawn +
                  " & until test -s " + drawn + " && grep -q waiting " + log +
                  "; do sleep 0.01; done; kill $!; wait $!; echo $?; cat " + log);
}

}  // namespace

TEST_F(RngctlTest, AFailedDrawLeavesTheOldFileAndNothingElse) {
  InstallPlugin("dsdr", "failing_device");
  WriteFile(TreePath("keys/key"), "old");
  const Result result = Run("read dsdr -n 8 -o " + TreePath("keys/key"));
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: The generator \"dsdr\" failed after 0 bytes.\n", result.errors);
  EXPECT_EQ("old", ReadFile(TreePath("keys/key")));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(TreePath("keys")), {}));
}

using BadEnd = std::pair<std::string, std::string>;  // what the plug-in does, and the message

class RngctlBadEnd : public RngctlTest, public testing::WithParamInterface<BadEnd> {};

TEST_P(RngctlBadEnd, IsAFailureAndLeavesTheOldFile) {
  const auto [action, message] = GetParam();
  InstallPlugin("dsdr", "drawing/" + action);
  WriteFile(TreePath("keys/key"), "old");
  const Result toFile = Run("read dsdr -n 5000 --raw -o " + TreePath("keys/key"));
  const Result toOutput = Run("read dsdr -n 5000 --raw");
  for (const Result& result : {toFile, toOutput}) {
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.errors, HasSubstr("rngctl: A plug-in " + message + "." + kAdvice));
  }
  EXPECT_EQ(768U, toOutput.output.size());
  EXPECT_EQ("old", ReadFile(TreePath("keys/key")));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(TreePath("keys")), {}));
}

INSTANTIATE_TEST_SUITE_P(Each, RngctlBadEnd,
                         testing::Values(BadEnd("Exit", "exited with status 0"),
                                         BadEnd("ExitAtOnce", "exited with status 0"),
                                         BadEnd("ExitWithChild", "exited with status 0"),
                                         BadEnd("Crash",
                                                "crashed with signal 11 (Segmentation fault)"),
                                         BadEnd("KillItself", "crashed with signal 9 (Killed)"),
                                         BadEnd("EndThread", "crashed with signal 6 (Aborted)"),
                                         BadEnd("CloseAll", "exited with status 1")));

TEST_F(RngctlTest, AFailedStopLeavesNoFile) {
  InstallPlugin("dsdr", "throwing_release");
  fs::create_directory(TreePath("keys"));
  EXPECT_EQ(1, Run("read unixdev -n 2 -o " + TreePath("keys/key")).status);
  EXPECT_TRUE(fs::is_empty(TreePath("keys")));
}

TEST_F(RngctlTest, AnInterruptedDrawLeavesNothing) {
  InstallPlugin("dsdr", "drawing/Wait");
  fs::create_directory(TreePath("keys"));
  const std::string draw =
      "env --default-signal " + Rngctl() + " read dsdr -n 5000 -o " + TreePath("keys/key");
  for (const char* signal :
       {"TERM", "HUP", "INT", "QUIT", "PIPE", "XFSZ", "ALRM", "USR1", "RTMIN"}) {
    const Result result =
        RunShell(draw + " & until ls " + TreePath("keys/key.*") +
                 "; do sleep 0.01; done >/dev/null 2>&1; kill -" + signal + " $!; wait $!");
    EXPECT_LT(128, result.status) << signal;
    EXPECT_TRUE(fs::is_empty(TreePath("keys"))) << signal;
    while (CountProcessesOf(Rngctl()) != 0) ::usleep(1000);
  }
}

// The kernel ignores the default action of signals for the first process of a PID namespace.
TEST_F(RngctlTest, ASignalAlsoEndsADrawThatIsTheFirstProcessOfAContainer) {
  const std::string inside = "unshare --map-root-user --pid --fork --kill-child ";
  if (RunShell(inside + "true").status != 0) GTEST_SKIP() << "this machine cannot run " << inside;
  InstallPlugin("dsdr", "drawing/Wait");
  fs::create_directory(TreePath("keys"));
  for (const auto& [signal, status] : {std::pair("TERM", 143), {"INT", 130}, {"QUIT", 131}}) {
    const Result result =
        RunShell(inside + "env --default-signal " + Rngctl() + " read dsdr -n 5000 -o " +
                 TreePath("keys/key") + " & until ls " + TreePath("keys/key.*") +
                 "; do sleep 0.01; done >/dev/null 2>&1; pkill -" + signal + " -P $!; wait $!");
    EXPECT_EQ(status, result.status) << signal;
    EXPECT_TRUE(fs::is_empty(TreePath("keys"))) << signal;
  }
}

TEST_F(RngctlTest, BytesThatNeverArrivedAreMissed) {
  InstallPlugin("dsdr", "drawing/ForgeTheEnd");
  const Result result = Run("read dsdr --unchecked -n 5000 --raw");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: A plug-in interfered with the draw: 768 bytes arrived instead of 5000." +
                std::string(kAdvice),
            result.errors);
}

TEST_F(RngctlTest, ADrawHearsOfASignal) {
  InstallPlugin("dsdr", "drawing/TellOfSignals");
  EXPECT_EQ("143\nwaiting\nterminated\n", InterruptDraw().output);
}

TEST_F(RngctlTest, ADrawThatIgnoresASignalIsKilled) {
  InstallPlugin("dsdr", "drawing/IgnoreSignals");
  EXPECT_EQ("143\nwaiting\n", InterruptDraw().output);
  EXPECT_EQ(0U, CountProcessesOf(Rngctl()));
}

// It may use a device that others wait for.
TEST_F(RngctlTest, ADrawEndsWithAProgramThatIsKilled) {
  InstallPlugin("dsdr", "drawing/Wait");
  fs::create_directory(TreePath("keys"));
  RunShell(Rngctl() + " read dsdr -n 5000 -o " + TreePath("keys/key") + " & until test -s " +
           TreePath("keys/key.*") + "; do sleep 0.01; done 2>/dev/null; kill -KILL $!; wait $!");
  while (CountProcessesOf(Rngctl()) != 0) ::usleep(1000);
}

TEST_F(RngctlTest, ADrawWithoutEndCanBeInterrupted) {
  fs::create_directory(TreePath("keys"));
  const std::string draw = Rngctl() + " read unixdev -n 99999999999 -o " + TreePath("keys/key");
  const Result result = RunShell(draw + " & until ls " + TreePath("keys/key.*") +
                                 "; do sleep 0.01; done >/dev/null 2>&1; kill $!; wait $!");
  EXPECT_LT(128, result.status);
  EXPECT_TRUE(fs::is_empty(TreePath("keys")));
}

// Nobody reads the pipe, so the program waits until it can write the rest.
TEST_F(RngctlTest, AWaitForThePipeCanBeInterrupted) {
  const std::string pipe = TreePath("pipe");
  const Result result =
      RunShell("mkfifo " + pipe + "; " + Rngctl() + " read unixdev -n 999999 --raw -o " + pipe +
               " & { head -c 1 <&3 >/dev/null; kill $!; wait $!; } 3<" + pipe);
  EXPECT_EQ(128 + SIGTERM, result.status);
}

TEST_F(RngctlTest, AFileThatBecomesTooLargeLeavesNothing) {
  fs::create_directory(TreePath("keys"));
  const Result result = RunShell("ulimit -f 8; exec " + Rngctl() + " read unixdev -n 99999 -o " +
                                 TreePath("keys/key"));
  EXPECT_EQ(SIGXFSZ, result.signal);
  EXPECT_TRUE(fs::is_empty(TreePath("keys")));
}

TEST_F(RngctlTest, AnIgnoredSignalStaysIgnored) {
  fs::create_directory(TreePath("keys"));
  const Result result = RunShell("trap '' XFSZ; ulimit -f 8; exec " + Rngctl() +
                                 " read unixdev -n 99999 -o " + TreePath("keys/key"));
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr("File too large"));
  EXPECT_TRUE(fs::is_empty(TreePath("keys")));
}

// In a session of its own a terminal's signals do not stop it, because nobody could continue it.
TEST_F(RngctlTest, SignalsThatEndNothingLeaveTheFile) {
  InstallPlugin("dsdr", "drawing/BeSlow");
  fs::create_directory(TreePath("keys"));
  for (const std::string signals : {"WINCH URG CONT CHLD", "TSTP TTIN TTOU"}) {
    const Result result = RunShell("exec setsid -w sh -c '" + Rngctl() + " read dsdr -n 5000 -o " +
                                   TreePath("keys/key") + " & until ls " + TreePath("keys/key.*") +
                                   "; do sleep 0.01; done >/dev/null 2>&1; for signal in " +
                                   signals + "; do kill -$signal $!; done; wait $!'");
    EXPECT_EQ(0, result.status) << result.errors;
    EXPECT_EQ(10001U, ReadFile(TreePath("keys/key")).size());
  }
}

// As under nohup. The first piece shows that the program has set its handlers.
TEST_F(RngctlTest, AnIgnoredHangUpDoesNotEndTheDraw) {
  InstallPlugin("dsdr", "drawing/BeSlow");
  fs::create_directory(TreePath("keys"));
  const Result result =
      RunShell("trap '' HUP; " + Rngctl() + " read dsdr -n 5000 -o " + TreePath("keys/key") +
               " & until test -s " + TreePath("keys/key.*") +
               "; do sleep 0.01; done 2>/dev/null; kill -HUP $!; wait $!");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ(10001U, ReadFile(TreePath("keys/key")).size());
}

// A handler that removes the file belongs to the parent alone.
TEST_F(RngctlTest, AHelperOfAPluginThatIsTerminatedLeavesTheFile) {
  InstallPlugin("dsdr", "drawing/LoseHelper");
  const Result result = Run("read dsdr -n 5000 -o " + TreePath("key"));
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ(10001U, ReadFile(TreePath("key")).size());
  const Result recorded = Run("read dsdr -n 5000 --record " + TreePath("record"));
  EXPECT_EQ(0, recorded.status) << recorded.errors;
  EXPECT_EQ(10001U, recorded.output.size());
}

TEST_F(RngctlTest, ARefusalMayBeLong) {
  const Result result = Run("read unixdev -n 2 --device " + std::string(100000, 'y'));
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, StartsWith("rngctl: The generator \"unixdev\" refuses the device "));
  EXPECT_THAT(result.errors, HasSubstr("y\n\"rngctl list\" shows the devices of generators"));
}

TEST_F(RngctlTest, ACallerMayIgnoreTheEndOfItsChildren) {
  for (const char* command : {"read unixdev -n 2", "default", "default set unixdev"}) {
    const Result result =
        RunShell("timeout 60 env --ignore-signal=CHLD " + Rngctl() + " " + command);
    EXPECT_EQ(0, result.status) << command << result.errors;
  }
}

TEST_F(RngctlTest, ACrashAfterTheLastByteIsAFailure) {
  InstallPlugin("dsdr", "breaking/exit_handler_stays");  // its code is no longer there
  fs::create_directory(TreePath("keys"));
  const Result result = Run("read dsdr -n 5 -o " + TreePath("keys/key"));
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr("A plug-in crashed with signal 11"));
  EXPECT_TRUE(fs::is_empty(TreePath("keys")));
}

TEST_F(RngctlTest, WhatAPluginPrintsIsNotAmongTheBytes) {
  InstallPlugin("dsdr", "drawing/Print");
  const Result result = Run("read dsdr -n 5000 --raw");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(5000U, result.output.size());
  EXPECT_THAT(result.output, Not(HasSubstr("a message")));
  EXPECT_EQ("a message\n", result.errors);
}

TEST_F(RngctlTest, NoCoreIsLeftWhileBytesAreDrawn) {
  InstallPlugin("dsdr", "drawing/watches_memory");
  InstallPlugin("biokbd", "drawing/watches_memory");
  EXPECT_EQ("0000\n", Run("read dsdr -n 2").output);
  EXPECT_EQ("0000\n", Run("read biokbd -n 2").output);
}

TEST_F(RngctlTest, NoCoreIsLeftWhileBytesAreWritten) {
  const std::string read = "LD_PRELOAD=" FAKE_LIBS_DIR "/needs_no_core.so " + Rngctl() + " read ";
  for (const std::string arguments : {"unixdev -n 5000", "--from unixdev -n 5000",
                                      "unixdev -n 5000 --record /dev/null -o /dev/null"}) {
    const Result result = RunShell(read + arguments);
    EXPECT_EQ(0, result.status) << arguments;
    EXPECT_EQ("", result.errors);
  }
}

TEST_F(RngctlTest, DrawnBytesAreWiped) {
  InstallPlugin("dsdr", "drawing/watches_memory");
  const Result result = RunShell("RNG_LOOK_FOR_BYTES=1 " + Rngctl() + " read dsdr -n 700");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.errors);
}
