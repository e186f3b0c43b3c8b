#ifndef HELPERS_TTY_TYPING_H
#define HELPERS_TTY_TYPING_H

#include "helpers/session/session.h"
#include "helpers/tty/terminal.h"

/// Asks the user to type until a gathering is complete.
class Typing {
 public:
  Typing(Session& session, Terminal& terminal, Gathering& gathering, bool isRemote);
  Typing(const Typing&) = delete;
  Typing& operator=(const Typing&) = delete;
  ~Typing();

  /// Returns true when there is enough, and false when the draw has ended: cancelled by the user or the
  /// host, or because the keys raise an alarm. Afterwards the terminal has its settings.
  bool Run();

 private:
  using Time = std::chrono::nanoseconds;

  void Ask();
  void ShowProgress(const std::string& more = "");
  void Wait();
  void HandleSignals();
  void HandleKeys(const std::string& bytes);
  void Suspend();
  bool IsHostStoppedAlone();
  void SwallowTheRest();

  Session& session;
  Terminal& terminal;
  Gathering& gathering;
  const bool isRemote;
  int signals;
  Time hostRan;  // when it was last seen not to be stopped
  bool isOver = false;
};

#endif
