#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <functional>
#include <string>

/// How a process ended, and what it said.
struct Result {
  int status;  ///< its exit status; -1 when a signal ended it
  std::string output;
  std::string errors;
  int signal = 0;  ///< the one that ended it
};

/// Runs a command of the shell, without input, and waits for it. The shell may turn a signal that ends
/// a program into a status above 128; with "exec PROGRAM" it is seen as a signal.
Result RunShell(const std::string& command);

/// Does `work` in a copy of this process, without input, and waits for it. The copy ends with the
/// status that `work` returns, without any clean-up.
Result RunForked(const std::function<int()>& work);

#endif
