// How a draw from "biokbd" ends when the user does nothing.

#include "tests/interactive/tty/terminal_draw.h"

#include <sys/wait.h>

using testing::SizeIs;

namespace {

constexpr char kHelper[] = "rng-gather-tty";

class TerminalEnd : public TerminalDraw {
 protected:
  void SetUp() override {
    ASSERT_TRUE(terminal.Shows("0%"));
    ASSERT_FALSE(before == terminal.Settings());
    const std::vector<pid_t> processes = host.Others(kHelper);
    ASSERT_THAT(processes, SizeIs(2));
    // The guard leads a group of its own.
    const bool isFirst = ::getpgid(processes[0]) == host.Get();
    helper = processes[isFirst ? 0 : 1];
    guard = processes[isFirst ? 1 : 0];
    ASSERT_EQ(guard, ::getpgid(guard));
  }

  pid_t helper = 0;
  pid_t guard = 0;
};

struct CancelledDraws : TerminalDraw {
  CancelledDraws() : TerminalDraw({CANCELLED_DRAWS, "biokbd", "100"}) {}
};

struct ForkingHost : TerminalDraw {
  ForkingHost() : TerminalDraw({FORKING_HOST, "biokbd"}) {}
};

// So many bytes that there is time to do something while they are sent.
constexpr char kHuge[] = "300000000";

struct CopiedHost : TerminalDraw {
  CopiedHost() : TerminalDraw({COPIED_HOST, "biokbd", kHuge}) {}
};

class HugeDraw : public TerminalDraw {
 protected:
  HugeDraw() : TerminalDraw({DRAWING_HOST, "biokbd", kHuge}) {}
  void SetUp() override {
    ASSERT_TRUE(terminal.Shows("0%"));
    ASSERT_TRUE(robot.TypeUntil(kEnough));
    ASSERT_TRUE(WaitUntil([this] { return before == terminal.Settings(); }));
  }
};

}  // namespace

TEST_F(CancelledDraws, LeaveNothing) {
  EXPECT_EQ("drawn 0\ndescriptors 0\nchildren 0\n", host.Finish());
  ExpectNothingLeft();
}

// While the copy lives, it has the socket open, too.
TEST_F(ForkingHost, AndItsCopyDoNotDisturbEachOther) {
  EXPECT_EQ(
      "copy: cancels\ncopy: self-test 1\ncopy: drawn 0\noriginal: still draws 1\noriginal: drawn "
      "0\noriginal: copy lives 1\n",
      host.Finish());
  ExpectNothingLeft();
}

// A user may think for a while.
TEST_F(TerminalEnd, ByCancelAfterAPauseWithoutWork) {
  EXPECT_TRUE(Sleeps(helper));
  EXPECT_TRUE(Sleeps(guard));
  host.Send(SIGUSR1);
  ExpectNoBytes();
}

TEST_F(TerminalEnd, ByCancel) {
  host.Send(SIGUSR1);
  ExpectNoBytes();
}

TEST_F(TerminalEnd, ByATerminatedHelper) {
  ::kill(helper, SIGTERM);
  ExpectNoBytes();
}

TEST_F(TerminalEnd, ByAQuitSignal) {
  ::kill(helper, SIGQUIT);
  ExpectNoBytes();
  EXPECT_TRUE(terminal.Shows("Cancelled."));
}

TEST_F(TerminalEnd, ByATimer) {
  ::kill(helper, SIGALRM);
  ExpectNoBytes();
  EXPECT_TRUE(terminal.Shows("Cancelled."));
}

TEST_F(TerminalEnd, ByAHangup) {
  ::kill(helper, SIGHUP);
  ExpectNoBytes();
}

TEST_F(TerminalEnd, ByAKilledHelper) {
  ::kill(helper, SIGKILL);
  ExpectNoBytes();
}

// What the user has typed for the draw is not for the shell.
TEST_F(TerminalEnd, ByAKilledHelperThatHasUnreadKeys) {
  ::kill(helper, SIGSTOP);
  terminal.Press("keys\n");
  ::kill(helper, SIGKILL);
  ExpectNoBytes();
  EXPECT_EQ(0, terminal.CountUnreadKeys());
}

TEST_F(TerminalEnd, ByAKilledHelperAfterTheHostHasChangedSettings) {
  termios settings = terminal.Settings();
  settings.c_lflag |= ECHO;
  terminal.Change(settings);
  ::kill(helper, SIGKILL);
  ExpectNoBytes();
}

// The host would print "no echo".
TEST_F(TerminalEnd, ByAKilledHelperWaitsForTheGuard) {
  {
    const Frozen frozen(guard);
    ::kill(helper, SIGKILL);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_FALSE(before == terminal.Settings());
    siginfo_t end = {};
    ::waitid(P_PID, static_cast<id_t>(host.Get()), &end, WEXITED | WNOHANG | WNOWAIT);
    EXPECT_EQ(0, end.si_pid);
  }
  ExpectNoBytes();
}

TEST_F(TerminalEnd, ByAKilledHost) {
  host.Send(SIGKILL);
  EXPECT_EQ("ready\n", host.Finish());
  ExpectNothingLeft();
}

TEST_F(TerminalEnd, ByATerminatedHost) {
  host.Send(SIGTERM);
  EXPECT_EQ("ready\n", host.Finish());
  ExpectNothingLeft();
}

TEST_F(TerminalEnd, ByAClosedTerminal) {
  terminal.Close();
  EXPECT_EQ("ready\n", host.Finish());
  EXPECT_EQ(SIGHUP, WTERMSIG(host.Status()));
  EXPECT_TRUE(host.IsAlone());
}

// Without the guard, the draw continues, and the front end restores the settings itself.
TEST_F(TerminalEnd, ByACancelAfterTheGuardHasBeenKilled) {
  ::kill(guard, SIGKILL);
  robot.Press();
  robot.Press();
  host.Send(SIGUSR1);
  ExpectNoBytes();
}

// The draw does not wait for it longer than a second.
TEST_F(TerminalEnd, ByAStoppedHelperThatIsCancelled) {
  ::kill(helper, SIGSTOP);
  host.Send(SIGUSR1);
  EXPECT_EQ("ready\nzeros\nno echo\ndescriptors 0\nchildren 0\n", host.Finish());
  ::kill(helper, SIGCONT);
  ExpectNothingLeft();
}

// The shell has the terminal then, so the helper must restore it.
TEST_F(TerminalEnd, ByAStoppedHost) {
  host.Send(SIGSTOP);
  EXPECT_TRUE(WaitUntil([this] { return host.Others(kHelper).empty(); }));
  EXPECT_TRUE(before == terminal.Settings());
  host.Send(SIGCONT);
  ExpectNoBytes();
}

// The bytes would take longer than this case may.
TEST_F(HugeDraw, IsCancelledWhileBytesAreSent) {
  host.Send(SIGUSR1);
  ExpectNoBytes();
}

// The draw has given the terminal back by then.
TEST_F(HugeDraw, LeavesSettingsThatChangeWhileBytesAreSent) {
  termios changed = before;
  changed.c_lflag ^= static_cast<tcflag_t>(ECHOE);
  terminal.Change(changed);
  host.Send(SIGUSR1);
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\n", host.Finish());
  EXPECT_TRUE(host.IsAlone());
  EXPECT_TRUE(changed == terminal.Settings());
}

TEST_F(HugeDraw, LeavesKeysThatAreTypedWhileBytesAreSent) {
  terminal.Press("keys\n");
  host.Send(SIGUSR1);
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\n", host.Finish());
  EXPECT_TRUE(host.IsAlone());
  EXPECT_EQ(5, terminal.CountUnreadKeys());
}

// A copy that was made while the helper started has its end of the socket open, too.
TEST_F(CopiedHost, NoticesTheEndOfTheHelper) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x03");
  EXPECT_TRUE(host.Prints("drawn 0"));
  host.Finish();
  ExpectNothingLeft();
}

TEST_F(CopiedHost, NoticesAKilledHelper) {
  ASSERT_TRUE(terminal.Shows("0%"));
  for (const pid_t process : host.Others(kHelper)) {
    if (::getpgid(process) == host.Get()) ::kill(process, SIGKILL);
  }
  EXPECT_TRUE(host.Prints("drawn 0"));
  host.Finish();
  ExpectNothingLeft();
}

// The copy has the host's end of the socket open, so the helper can still send.
TEST_F(CopiedHost, LeavesNoHelperIfItIsKilledWhileBytesAreSent) {
  ASSERT_TRUE(robot.TypeUntil(kEnough));
  ASSERT_TRUE(WaitUntil([this] { return before == terminal.Settings(); }));
  host.Send(SIGKILL);
  EXPECT_TRUE(WaitUntil([this] { return host.Others(kHelper).empty(); }));
}
