#ifndef TOOLS_RNGCTL_TERMINAL_H
#define TOOLS_RNGCTL_TERMINAL_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/// Whether standard output shows colours: it is a terminal, and NO_COLOR does not forbid them.
bool UsesColour();

/// Says on standard error what is being waited for, when that is a terminal and this object lives
/// longer than a second. The line goes with it.
class WaitNotice {
 public:
  explicit WaitNotice(const std::string& waitedFor);

 private:
  void ShowUntil(const std::stop_token& end);

  const std::string text;
  std::mutex lock;
  std::condition_variable_any hasEnded;
  std::jthread thread;  // the last to be built: it uses the others
};

#endif
