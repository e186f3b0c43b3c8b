#ifndef TESTS_INTERACTIVE_TERMINAL_DRAW_H
#define TESTS_INTERACTIVE_TERMINAL_DRAW_H

#include "tests/interactive/host_process.h"
#include "tests/interactive/tty/pseudo_terminal.h"
#include "tests/interactive/tty/typing_robot.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/ptrace.h>
#include <sys/wait.h>

constexpr char kPrompt[] = "press Ctrl-C";
constexpr char kEnough[] = "100%";

/// Keeps a process from running. SIGSTOP does not suffice: the kernel continues a stopped
/// process group when it becomes orphaned.
class Frozen {
 public:
  explicit Frozen(pid_t frozen) : process(frozen) {
    EXPECT_EQ(0, ::ptrace(PTRACE_SEIZE, process, nullptr, nullptr));
    EXPECT_EQ(0, ::ptrace(PTRACE_INTERRUPT, process, nullptr, nullptr));
    EXPECT_EQ(process, ::waitpid(process, nullptr, __WALL));
  }
  Frozen(const Frozen&) = delete;
  Frozen& operator=(const Frozen&) = delete;
  ~Frozen() { ::ptrace(PTRACE_DETACH, process, nullptr, nullptr); }

 private:
  const pid_t process;
};

/// A host that draws from "biokbd" on a terminal.
class TerminalDraw : public testing::Test {
 protected:
  explicit TerminalDraw(const HostProcess::Words& command = {DRAWING_HOST, "biokbd", "32"},
                        const HostProcess::Words& variables = {"TERM=dumb"})
      : host(command, variables, terminal.Path()) {}

  /// No process, and the settings of the terminal as they were.
  void ExpectNothingLeft() {
    EXPECT_TRUE(host.IsAlone());
    EXPECT_TRUE(before == terminal.Settings());
  }

  /// The draw fails, and the buffer has nothing of it.
  void ExpectNoBytes() {
    EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\n", host.Finish());
    ExpectNothingLeft();
  }

  void ExpectProgressBelow(int percent) {
    for (int i = percent; i <= 100; ++i) {
      EXPECT_THAT(terminal.Screen(),
                  testing::Not(testing::HasSubstr("] " + std::to_string(i) + "%")));
    }
  }

  PseudoTerminal terminal;
  const termios before = terminal.Settings();
  TypingRobot robot{terminal};
  HostProcess host;
};

#endif
