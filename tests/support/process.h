#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <functional>
#include <string>

/// How a process ended, and what it printed.
struct Result {
  int status;  ///< its exit status; -1 when a signal ended it
  std::string output;
  std::string errors;
  int signal = 0;  ///< the one that ended it
};

/// Runs a shell command without input and waits for it. When a signal ends a program, the shell may
/// turn that into a status above 128; with "exec PROGRAM" the result has the signal.
Result RunShell(const std::string& command);

/// Runs `work` in a forked copy of this process, without input, and waits for it. The copy exits with
/// the status that `work` returns, without any clean-up.
Result RunForked(const std::function<int()>& work);

/// How many processes run that program.
std::size_t CountProcessesOf(const std::string& program);

#endif
