#ifndef TOOLS_RNGCTL_PROCESS_INTERRUPTION_H
#define TOOLS_RNGCTL_PROCESS_INTERRUPTION_H

#include <csignal>
#include <string>
#include <vector>

/// Thrown where the user or the system wants this process to end: what is under way is cleaned up, then
/// `EndBySignal` ends it as the signal would have.
struct Interrupted {
  int signal;
  std::vector<std::string> leftRunning;  ///< what a child has left running
};
[[noreturn]] void EndBySignal(int signal);

/// While it lives, SIGINT, SIGTERM and SIGHUP only interrupt waiting. Ignored signals stay ignored.
class InterruptionWatch {
 public:
  InterruptionWatch();
  InterruptionWatch(const InterruptionWatch&) = delete;
  InterruptionWatch& operator=(const InterruptionWatch&) = delete;
  ~InterruptionWatch();

  static int Signal();  ///< the signal that came, 0 for none

 private:
  struct Before {
    int signal;
    struct sigaction action;
  };
  std::vector<Before> before;
};

#endif
