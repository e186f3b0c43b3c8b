#ifndef HELPERS_TTY_TYPING_H
#define HELPERS_TTY_TYPING_H

#include "helpers/session/session.h"
#include "helpers/tty/signals.h"
#include "helpers/tty/terminal/terminal.h"

/// Asks the user to type until a gathering is complete.
class Typing {
 public:
  /// `into`: the gathering to complete. `overNetwork`: tell the user that it takes more keys.
  Typing(const Session& of, const Signals& incoming, Terminal& where, Gathering& into,
         bool overNetwork);
  Typing(const Typing&) = delete;
  Typing& operator=(const Typing&) = delete;

  /// Returns true when there is enough, and false if the user or the host cancels the draw or the keys raise an
  /// alarm. Restores the terminal's settings before it returns.
  bool Run();

 private:
  using Time = std::chrono::nanoseconds;

  void Ask();
  void ShowProgress();
  void Wait();
  void HandleSignals();
  void HandleKeys(const std::string& bytes);
  bool Suspend();
  void Resume();
  bool IsHostStoppedAlone();
  void SwallowTheRest();
  void SayWhyNot();

  const Session& session;
  const Signals& signals;
  Terminal& terminal;
  Gathering& gathering;
  const bool isRemote;
  Time hostRan;    // when the host was last seen running
  int shown = -1;  // the percentage on the screen
  bool isOver = false;
};

#endif
