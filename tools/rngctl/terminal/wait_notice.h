#ifndef TOOLS_RNGCTL_TERMINAL_WAIT_NOTICE_H
#define TOOLS_RNGCTL_TERMINAL_WAIT_NOTICE_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/// Shows what the program is waiting for, if standard error is a terminal and this object lives longer
/// than a second. The destructor erases the line.
class WaitNotice {
 public:
  explicit WaitNotice(const std::string& waitedFor);

  /// Prints lines on standard error, above the notice if it is shown. Any thread.
  void PrintAbove(const std::string& lines);

 private:
  void ShowUntil(const std::stop_token& end);

  const std::string text;
  std::mutex lock;
  std::condition_variable_any hasEnded;
  bool isShown = false;
  std::jthread thread;  // built last: it uses the others
};

#endif
