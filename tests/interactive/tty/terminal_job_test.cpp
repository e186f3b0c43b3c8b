// "biokbd" under a shell that controls jobs.

#include "tests/interactive/tty/terminal_draw.h"
#include "tests/support/tree.h"

#include <fcntl.h>
#include <sstream>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

using testing::AnyOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace {

class Job : public TerminalDraw {
 protected:
  // What the script does with the draw.
  explicit Job(const std::string& script)
      : TerminalDraw(
            {"/bin/bash", "-m", "-c", "draw() { " DRAWING_HOST " biokbd 32; }; " + script}) {}

  // Of the front ends, without their guards.
  void SendToHelpers(int signal) const {
    for (const pid_t process : host.Others("rng-gather-tty")) {
      if (::getpgid(process) != process) ::kill(process, signal);
    }
  }
};

struct StoppedJob : Job {
  StoppedJob()
      : Job("set +e; " DRAWING_HOST
            " biokbd 32; echo stopped $?; read -r line </dev/tty; "
            "echo line $line; fg; echo end $?") {}

  int CountPrompts() {
    int count = 0;
    const std::string& screen = terminal.Screen();
    for (std::size_t at = 0; (at = screen.find(kPrompt, at)) != std::string::npos; ++at) ++count;
    return count;
  }
};

struct StoppedByForce : Job {
  StoppedByForce() : Job("set +e; " DRAWING_HOST " biokbd 32; echo stopped; read -r line") {}
};

struct ContinuedInTheBackground : Job {
  ContinuedInTheBackground() : Job("set +e; " DRAWING_HOST " biokbd 32; bg; wait; echo end") {}
};

struct ForegroundJob : Job {
  ForegroundJob() : Job("draw; echo end") {}
};

struct JobThatCannotBeStopped : Job {
  JobThatCannotBeStopped() : Job("trap '' TSTP; draw; echo end") {}
};

// Without jobs, the shell has the terminal together with the draw and its helper.
struct ShellWithoutJobs : TerminalDraw {
  ShellWithoutJobs() : TerminalDraw({"/bin/bash", "-c", DRAWING_HOST " biokbd 32; read -r line"}) {}
};

// Two jobs, of which the first one is stopped while it asks.
struct SecondJob : Job {
  SecondJob()
      : Job("set +e; " DRAWING_HOST " biokbd 32; echo stopped; " DRAWING_HOST
            " biokbd 32; kill %1; wait; echo end") {}
};

struct BackgroundJob : Job {
  BackgroundJob() : Job("draw & wait; echo end") {}
};

constexpr char kNoSignals[] = "0000000000000000";

struct Pipeline : Job {
  Pipeline() : Job(DRAWING_HOST " biokbd 32 | " DRAWING_HOST " biokbd 32; echo end") {}

  // From /proc; empty if the process has ended.
  static std::string Field(pid_t process, const std::string& name) {
    std::istringstream status(ReadFile("/proc/" + std::to_string(process) + "/status"));
    std::string word;
    while (status >> word && word != name + ':') continue;
    return status >> word ? word : "";
  }

  // It leads a group of its own.
  pid_t FindGuard() const {
    const std::vector<pid_t> processes = host.Others("rng-gather-tty");
    const auto guard = std::find_if(processes.begin(), processes.end(),
                                    [](pid_t process) { return ::getpgid(process) == process; });
    return guard == processes.end() ? 0 : *guard;
  }

  // The front end without a guard, once it handles signals.
  pid_t FindWaiting() const {
    std::vector<pid_t> processes;
    WaitUntil([&] { return (processes = host.Others("rng-gather-tty")).size() == 3; });
    const pid_t guard = FindGuard();
    const std::string asking = Field(guard, "PPid");
    for (const pid_t process : processes) {
      if (process == guard || std::to_string(process) == asking) continue;
      WaitUntil([&] { return Field(process, "SigBlk") != kNoSignals; });
      return process;
    }
    throw std::runtime_error("no front end waits");
  }

  std::size_t CountPrompts() {
    const std::string& screen = terminal.Screen();
    std::size_t count = 0;
    for (auto at = screen.find(kPrompt); at != std::string::npos; at = screen.find(kPrompt, at + 1))
      ++count;
    return count;
  }
};

struct EndedPipeline : Pipeline, testing::WithParamInterface<int> {};

}  // namespace

TEST_F(StoppedJob, GivesTheTerminalBackAndGoesOn) {
  ASSERT_TRUE(terminal.Shows("0%"));
  for (int i = 0; i < 30; ++i) robot.Press();
  terminal.Press("\x1a");
  ASSERT_TRUE(host.Prints("stopped 148"));
  EXPECT_TRUE(before == terminal.Settings());
  terminal.Press("hello\n");
  ASSERT_TRUE(host.Prints("line hello"));
  ASSERT_TRUE(terminal.Shows(kPrompt));
  ASSERT_TRUE(terminal.Shows("] "));  // the bar, although it has not changed
  ASSERT_TRUE(robot.TypeUntil(kEnough));
  EXPECT_EQ(2, CountPrompts());  // at the start, and after the stop
  EXPECT_THAT(host.Finish(), HasSubstr("\ndrawn\ndescriptors 0\nchildren 0\nend 0\n"));
  ExpectNothingLeft();
}

// The shell has the terminal then, and settings of its own, which are not those from before the draw.
TEST_F(StoppedByForce, LeavesTheSettingsOfTheShell) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const std::vector<pid_t> processes = host.Others("rng-gather-tty");
  ASSERT_EQ(2U, processes.size());
  const pid_t helper = processes[::getpgid(processes[0]) == processes[0] ? 1 : 0];  // not the guard
  ::kill(-::getpgid(helper), SIGSTOP);
  ASSERT_TRUE(host.Prints("stopped"));
  termios ofTheShell = before;
  ofTheShell.c_lflag &= ~static_cast<tcflag_t>(ICANON);
  terminal.Change(ofTheShell);
  ::kill(helper, SIGKILL);
  EXPECT_TRUE(WaitUntil([this] { return host.Others("rng-gather-tty").empty(); }));
  EXPECT_TRUE(ofTheShell == terminal.Settings());
}

TEST_F(ContinuedInTheBackground, GetsNoBytes) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x1a");
  EXPECT_THAT(host.Finish(), EndsWith("zeros\ndescriptors 0\nchildren 0\nend\n"));
  ExpectNothingLeft();
}

TEST_F(ContinuedInTheBackground, SaysNothing) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const std::size_t shown = terminal.Screen().size();
  terminal.Press("\x1a");
  host.Finish();
  const std::string after = terminal.Screen().substr(shown);
  EXPECT_THAT(after, Not(AnyOf(HasSubstr(kPrompt), HasSubstr("Cancelled"))));
  EXPECT_THAT(after, Not(ContainsRegex("\r[^\r\n]")));  // nor does it overwrite a line
}

TEST_F(JobThatCannotBeStopped, GoesOn) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x1a");
  ASSERT_TRUE(terminal.Shows(kPrompt));
  EXPECT_TRUE(robot.TypeUntil("5%"));
  terminal.Press("\x03");
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\nend\n", host.Finish());
  ExpectNothingLeft();
}

// While the draw is suspended, another one takes the terminal, and the host cancels.
TEST_F(ShellWithoutJobs, EndsIfTheDrawIsCancelledWhileItWaitsToResume) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const int other = ::open(terminal.Path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  terminal.Press("\x1a");
  ASSERT_EQ(0, ::flock(other, LOCK_EX));
  const std::size_t shown = terminal.Screen().size();
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  EXPECT_THAT(terminal.Screen().substr(shown), Not(HasSubstr(kPrompt)));
  for (const pid_t process : host.Others("drawing_host")) ::kill(process, SIGUSR1);
  EXPECT_TRUE(WaitUntil([this] { return host.Others("rng-gather-tty").empty(); }));
  ::close(other);
}

// A shell may have changed the settings while it was stopped. SIGTTOU comes when the shell has the terminal.
TEST_F(ForegroundJob, GoesOnAfterItsHelperWasStopped) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const std::vector<pid_t> processes = host.Others("rng-gather-tty");
  ASSERT_EQ(2U, processes.size());
  const pid_t helper = processes[::getpgid(processes[0]) == processes[0] ? 1 : 0];  // not the guard
  ::kill(helper, SIGTTOU);
  EXPECT_TRUE(robot.TypeUntil("5%"));
  ::kill(helper, SIGSTOP);
  ::kill(helper, SIGCONT);
  EXPECT_TRUE(terminal.Shows(kPrompt));
  EXPECT_TRUE(terminal.Shows("] "));
  terminal.Press("\x03");
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\nend\n", host.Finish());
  ExpectNothingLeft();
}

// Nobody would restore the settings if it were killed now.
TEST_F(ForegroundJob, TakesTheTerminalAgainOnlyWithAGuard) {
  ASSERT_TRUE(terminal.Shows("0%"));
  for (const pid_t process : host.Others("rng-gather-tty")) {
    if (::getpgid(process) == process) ::kill(process, SIGKILL);
  }
  EXPECT_TRUE(WaitUntil([this] { return host.Others("rng-gather-tty").size() == 1; }));
  const std::size_t shown = terminal.Screen().size();
  SendToHelpers(SIGCONT);
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\nend\n", host.Finish());
  EXPECT_THAT(terminal.Screen().substr(shown), Not(HasSubstr(kPrompt)));
  ExpectNothingLeft();
}

TEST_F(SecondJob, AsksWhileTheFirstIsStopped) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x1a");
  ASSERT_TRUE(host.Prints("stopped"));
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x03");
  EXPECT_THAT(host.Finish(), EndsWith("zeros\ndescriptors 0\nchildren 0\nend\n"));
  ExpectNothingLeft();
}

TEST_F(BackgroundJob, GetsNoBytesAndNoKeys) {
  EXPECT_TRUE(terminal.Shows("Run it in the foreground."));
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\nend\n", host.Finish());
  ExpectNothingLeft();
}

// Two programs ask for keys in one terminal. The second one waits, or it would take keys of the first.
TEST_F(Pipeline, AsksForOneDrawAfterTheOther) {
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(terminal.Shows("0%"));
    // One front end with its guard, and one that waits.
    const std::size_t expected = i == 0 ? 3 : 2;
    EXPECT_TRUE(WaitUntil([&] { return host.Others("rng-gather-tty").size() == expected; }));
    terminal.Press("\x03");
  }
  EXPECT_THAT(host.Finish(), EndsWith("zeros\ndescriptors 0\nchildren 0\nend\n"));
  ExpectNothingLeft();
}

// As when the job was stopped and goes on.
TEST_F(Pipeline, WaitsForItsTurnAfterASignalThatEndsNothing) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const pid_t waiting = FindWaiting();
  ::kill(waiting, SIGCONT);
  EXPECT_TRUE(WaitUntil([&] { return Field(waiting, "ShdPnd") == kNoSignals; }));
  terminal.Press("\x03");
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x03");
  host.Finish();
  ExpectNothingLeft();
}

// The guard keeps the terminal until it has restored the settings.
TEST_F(Pipeline, WaitsForTheGuardOfAKilledHelper) {
  ASSERT_TRUE(terminal.Shows("0%"));
  FindWaiting();
  const pid_t guard = FindGuard();
  ASSERT_NE(0, guard);
  const pid_t asking = std::stoi(Field(guard, "PPid"));
  {
    const Frozen frozen(guard);
    ::kill(asking, SIGKILL);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(1U, CountPrompts());
  }
  EXPECT_TRUE(WaitUntil([this] { return CountPrompts() == 2; }));
  terminal.Press("\x03");
  EXPECT_THAT(host.Finish(), EndsWith("zeros\ndescriptors 0\nchildren 0\nend\n"));
  ExpectNothingLeft();
}

TEST_P(EndedPipeline, EndsBeforeItsTurn) {
  ASSERT_TRUE(terminal.Shows("0%"));
  ::kill(FindWaiting(), GetParam());
  EXPECT_TRUE(WaitUntil([this] { return host.Others("rng-gather-tty").size() == 2; }));
  terminal.Press("\x03");
  EXPECT_THAT(host.Finish(), EndsWith("zeros\ndescriptors 0\nchildren 0\nend\n"));
  ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(By, EndedPipeline, testing::Values(SIGTERM, SIGHUP, SIGINT));
