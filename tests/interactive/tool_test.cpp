// Hosts and rngctl with the real plug-ins, in the tree of the case.

#include "tests/interactive/tty/terminal_draw.h"
#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <atomic>
#include <filesystem>
#include <optional>

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

std::string Rngctl() { return TreePath("bin/rngctl"); }

class InstalledInTree : public testing::Test {
 protected:
  InstalledInTree() { RunShell("cp -a --remove-destination " INSTALLATION "/. " + TreePath("")); }

  // On the terminal.
  HostProcess& Start(const HostProcess::Words& command) {
    return host.emplace(command,
                        HostProcess::Words{"TERM=dumb", "LD_LIBRARY_PATH=" + TreePath("lib"),
                                           kTreeVariable + std::string("=") + TreePath("")},
                        terminal.Path());
  }

  // In a session without a terminal.
  static Result RunWithoutTerminal(const std::string& arguments) {
    return RunShell("exec setsid -w " + Rngctl() + " " + arguments);
  }

  PseudoTerminal terminal;
  const termios before = terminal.Settings();
  TypingRobot robot{terminal};
  std::optional<HostProcess> host;
};

class DoctorOfTheKeyboard : public InstalledInTree {
 protected:
  const std::string helper = TreePath("libexec/rngaggregator/rng-gather-tty");
};

}  // namespace

TEST_F(InstalledInTree, SupportsATypicalRun) {
  HostProcess& run = Start({TYPICAL_RUN});
  ASSERT_TRUE(terminal.Shows(kPrompt));
  ASSERT_TRUE(robot.TypeUntil(kEnough));
  EXPECT_EQ("usable 2\ndefault 1 biokbd\ndrawn 1, zeros 0\nstored 1\nstopped 1\n", run.Finish());
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=unixdev\nRandomNumberGeneratorHardwareID=\n",
            ReadFile(TreePath("etc/rng.ini")));
  EXPECT_TRUE(run.IsAlone());
  EXPECT_TRUE(before == terminal.Settings());
}

TEST_F(InstalledInTree, FallsBackToTheKeyboard) {
  EXPECT_THAT(Start({Rngctl(), "default"}).Finish(),
              HasSubstr("fallback    biokbd\nloaded      yes\n"));
  EXPECT_THAT(RunWithoutTerminal("default").output,
              HasSubstr("fallback    biokbd\nloaded      no\n"));
}

TEST_F(InstalledInTree, IsListedAsInteractive) {
  EXPECT_THAT(Start({Rngctl(), "list"}).Finish(),
              ContainsRegex("\nbiokbd +yes +needs-user,may-block +Keys that the user presses"));
}

TEST_F(InstalledInTree, IsReadByTheTool) {
  HostProcess& tool = Start({Rngctl(), "read", "-n", "32", "biokbd"});
  ASSERT_TRUE(terminal.Shows(kPrompt));
  ASSERT_TRUE(robot.TypeUntil(kEnough));
  EXPECT_THAT(tool.Finish(), MatchesRegex("[0-9a-f]+\n"));
  EXPECT_EQ(65U, tool.Finish().size());
  EXPECT_TRUE(before == terminal.Settings());
}

TEST_F(InstalledInTree, LeavesTheTerminalWhenTheToolIsKilled) {
  HostProcess& tool = Start({Rngctl(), "read", "biokbd", "-n", "32"});
  ASSERT_TRUE(terminal.Shows("0%"));
  tool.Send(SIGKILL);
  EXPECT_EQ("", tool.Finish());
  EXPECT_TRUE(tool.IsAlone());
  EXPECT_TRUE(before == terminal.Settings());
}

TEST_F(InstalledInTree, CancelsTheToolWithControlC) {
  HostProcess& tool = Start({Rngctl(), "read", "biokbd", "-n", "32", "-o", TreePath("key")});
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x03");
  EXPECT_EQ("", tool.Finish());
  EXPECT_TRUE(
      terminal.Shows("The draw from the generator \"biokbd\" was cancelled, or it failed."));
  EXPECT_FALSE(std::filesystem::exists(TreePath("key")));
}

TEST_F(InstalledInTree, ControlCEndsACombinationThatNeedsOnlyOthers) {
  HostProcess& tool = Start({Rngctl(), "read", "--from", "unixdev,biokbd", "--need", "1", "-n",
                             "32", "-o", TreePath("key")});
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x03");
  EXPECT_EQ("", tool.Finish());
  EXPECT_TRUE(
      terminal.Shows("rngctl: The generator \"biokbd\" failed, or the draw was cancelled."));
  EXPECT_FALSE(std::filesystem::exists(TreePath("key")));
}

TEST_F(InstalledInTree, IsNotReadWithoutATerminal) {
  const Result result = RunWithoutTerminal("read biokbd -n 32");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(
      "rngctl: There is no usable generator \"biokbd\". Run \"rngctl list\" to see the usable "
      "ones, and \"rngctl doctor\" to find out why it is missing.\n",
      result.errors);
}

// Draws that wait for the user are cancelled after a quarter of the time.
TEST_F(InstalledInTree, KeepsTheContract) {
  Start({Rngctl(), "check", TreePath("lib/librngbiokb.so"), "--timeout", "4"});
  std::atomic<bool> hasEnded = false;
  std::thread typing([&] {
    while (!hasEnded) robot.Press();
  });
  EXPECT_THAT(host->Finish(),
              ContainsRegex("\n40 checks passed, 0 failed, 0 warnings, 9 not examined"));
  hasEnded = true;
  typing.join();
  EXPECT_TRUE(host->IsAlone());
  EXPECT_TRUE(before == terminal.Settings());
}

TEST_F(DoctorOfTheKeyboard, FindsNoFaultOnATerminal) {
  EXPECT_THAT(Start({Rngctl(), "doctor", "biokbd"}).Finish(), HasSubstr("loaded as \"biokbd\""));
  EXPECT_EQ(0, host->Status());
}

TEST_F(DoctorOfTheKeyboard, SaysThatThereIsNoTerminal) {
  const Result result = RunWithoutTerminal("doctor biokbd");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("\nbiokbd: There is no terminal to type in. "));
}

// As for a display that is missing: the installation is in order.
TEST_F(DoctorOfTheKeyboard, DoesNotCountAMissingTerminalAsAProblemOfAll) {
  const Result result = RunWithoutTerminal("doctor");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("\nbiokbd: There is no terminal"));
}

TEST_F(DoctorOfTheKeyboard, WarnsOfAHelperThatOthersCanChange) {
  std::filesystem::permissions(helper, std::filesystem::perms(0777));
  EXPECT_THAT(RunWithoutTerminal("doctor").output,
              ContainsRegex("libexec/rngaggregator/rng-gather-tty.*can"));
}

TEST_F(DoctorOfTheKeyboard, SaysThatItRunsInTheBackground) {
  Start({"/bin/bash", "-m", "-c", Rngctl() + " doctor biokbd & wait"});
  EXPECT_THAT(host->Finish(),
              HasSubstr("The program runs in the background, where it cannot ask for keys."));
}

TEST_F(DoctorOfTheKeyboard, NamesAMissingHelper) {
  std::filesystem::remove(helper);
  EXPECT_THAT(
      Start({Rngctl(), "doctor", "biokbd"}).Finish(),
      ContainsRegex("rng-gather-tty: No such file or directory. Reinstall rng-plugin-biokb."));
}

TEST_F(DoctorOfTheKeyboard, NamesADirectoryInPlaceOfTheHelper) {
  std::filesystem::remove(helper);
  std::filesystem::create_directory(helper);
  const std::string output = Start({Rngctl(), "doctor", "biokbd"}).Finish();
  EXPECT_THAT(output, HasSubstr("not available"));
  EXPECT_THAT(output, HasSubstr("rng-gather-tty: Is a directory. Reinstall rng-plugin-biokb."));
}

TEST_F(DoctorOfTheKeyboard, NamesAHelperThatIsNotExecutable) {
  std::filesystem::permissions(helper, std::filesystem::perms(0644));
  EXPECT_THAT(Start({Rngctl(), "doctor", "biokbd"}).Finish(),
              ContainsRegex("rng-gather-tty: Permission denied. Run: chmod 755 .*/rng-gather-tty"));
}
