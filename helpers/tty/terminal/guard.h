#ifndef HELPERS_TTY_TERMINAL_GUARD_H
#define HELPERS_TTY_TERMINAL_GUARD_H

#include "helpers/tty/terminal/taken_settings.h"

/// Restores the settings of a terminal if this process is killed. For that it is a process of its own, which
/// keeps the settings and waits.
class Guard {
 public:
  /// `kept`, if it is a descriptor, stays open until the guard has done its work: whoever waits for the end of
  /// that socket finds the terminal as it was. Throws a `std::runtime_error` if no process can be started.
  Guard(int terminal, int kept);
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
  ~Guard();

  /// What to restore from now on. False if the guard has been killed.
  bool Tell(const TakenSettings& settings) const;

 private:
  int pipe = -1;  // the guard acts when it is closed
};

#endif
