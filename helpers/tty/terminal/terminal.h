#ifndef HELPERS_TTY_TERMINAL_TERMINAL_H
#define HELPERS_TTY_TERMINAL_TERMINAL_H

#include "helpers/tty/terminal/guard.h"

#include <optional>
#include <string>

/// The controlling terminal. Its settings come back when this object is destroyed or this process is killed.
class Terminal {
 public:
  /// Throws a `std::runtime_error` if there is none.
  Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal();

  int Get() const { return descriptor; }

  /// The name of its device without "/dev/", such as "pts/3"; "" if it cannot be found out.
  std::string Name() const;

  /// False while another front end takes keys there. Without the right to open the device by its name, as
  /// after su, this is not known, and the result true.
  bool Reserve();

  /// Must come before `TakeKeys`, and before there is anything secret in memory. `kept`: see `Guard`.
  void StartGuard(int kept) { guard.emplace(descriptor, kept); }

  /// Changes the settings, so that every key arrives at once. Throws a `std::runtime_error` if the guard has
  /// been killed.
  void TakeKeys();

  /// The settings as they were. In between, they belong to others.
  void LeaveKeys();

  bool IsForeground() const;

  /// What has been typed: empty if nothing has, or the terminal is gone (see `IsGone`).
  std::string Read();
  bool IsGone() const { return isGone; }

  /// Writes text over the line of the cursor, cut to the width of the window.
  void ShowLine(const std::string& text);
  /// Writes text, and begins a new line.
  void Say(const std::string& text);

 private:
  void Write(const std::string& text);
  std::size_t Width() const;

  int descriptor;
  int reservation = -1;
  std::optional<Guard> guard;
  TakenSettings settings = {};
  std::size_t shown = 0;  // characters of the line of the cursor
  bool isGone = false;
};

#endif
