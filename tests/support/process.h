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

/// Runs a command of the shell, without input, and waits for it. It shows a signal that ends one of the
/// command's own processes as a status above 128, unless the command is "exec PROGRAM ...".
Result RunShell(const std::string& command);

/// Does `work` in a copy of this process, without input, and waits for it. The copy ends with the
/// status that `work` returns, without any clean-up.
Result RunForked(const std::function<int()>& work);

#endif
