#ifndef HELPERS_TTY_TERMINAL_H
#define HELPERS_TTY_TERMINAL_H

#include <string>
#include <termios.h>

/// The controlling terminal, in the foreground. Its settings come back when this object is destroyed, and
/// also if this process is killed: a second process, the guard, keeps them and waits for that.
class Terminal {
 public:
  /// Throws a `std::runtime_error` if there is no terminal, or if this process is in the background.
  Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal();

  int Get() const { return descriptor; }

  /// No echo, no lines, no signals from keys, no flow control: every key arrives at once.
  void TakeKeys();

  /// The settings as they were, if `TakeKeys` has changed them. In between, they belong to others.
  void Restore();

  bool IsForeground() const;

  /// What has been typed: empty if nothing has, or the terminal is gone (see `IsGone`).
  std::string Read();
  bool IsGone() const { return isGone; }

  /// Writes text over the line of the cursor, cut to the width of the window.
  void ShowLine(const std::string& text);
  /// Writes text, and begins a new line.
  void Say(const std::string& text);

 private:
  void StartGuard();
  void Tell(char message) const;
  void Write(const std::string& text);
  std::size_t Width() const;

  int descriptor;
  int guard = -1;  // the guard acts when this end of its pipe is closed
  termios before = {};
  std::size_t shown = 0;  // characters of the line of the cursor
  bool hasKeys = false;
  bool isGone = false;
};

#endif
