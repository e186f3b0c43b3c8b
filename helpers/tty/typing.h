#ifndef HELPERS_TTY_TYPING_H
#define HELPERS_TTY_TYPING_H

#include "helpers/session/session.h"
#include "helpers/tty/signals.h"
#include "helpers/tty/terminal/terminal.h"

/// Asks the user to type until a gathering is complete.
class Typing {
 public:
  /// `into`: what to complete. `overNetwork`: tell the user that it takes more keys.
  Typing(const Session& of, const Signals& incoming, Terminal& where, Gathering& into,
         bool overNetwork);
  Typing(const Typing&) = delete;
  Typing& operator=(const Typing&) = delete;

  /// Returns true when there is enough, and false when the draw has ended: cancelled by the user or the
  /// host, or because the keys raise an alarm. Afterwards the terminal has its settings.
  bool Run();

 private:
  using Time = std::chrono::nanoseconds;

  void Ask();
  void ShowProgress();
  void Wait();
  void HandleSignals();
  void HandleKeys(const std::string& bytes);
  void Suspend();
  void Resume();
  bool IsHostStoppedAlone();
  void SwallowTheRest();
  void SayWhyNot();

  const Session& session;
  const Signals& signals;
  Terminal& terminal;
  Gathering& gathering;
  const bool isRemote;
  Time hostRan;    // when it was last seen not to be stopped
  int shown = -1;  // the bits of the progress on the screen
  bool isOver = false;
};

#endif
