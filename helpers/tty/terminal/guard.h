#ifndef HELPERS_TTY_TERMINAL_GUARD_H
#define HELPERS_TTY_TERMINAL_GUARD_H

#include "helpers/tty/terminal/taken_settings.h"

/// Restores the settings of a terminal if this process is killed. It is a separate process that keeps the settings
/// and waits.
class Guard {
 public:
  /// `socket` and `lock`, if they are descriptors, stay open until the guard has restored the settings, so that
  /// whoever waits for the end of the socket, or for the lock, finds the terminal restored. The guard then shuts
  /// the socket down. Throws a `std::runtime_error` if no process can be started.
  Guard(int terminal, int socket, int lock);
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
  ~Guard();

  /// Tells the guard what to restore from now on. Returns false if the guard has been killed.
  bool Tell(const TakenSettings& settings) const;

 private:
  int pipe = -1;  // the guard acts when it is closed
};

#endif
