#ifndef HELPERS_TTY_TERMINAL_TERMINAL_H
#define HELPERS_TTY_TERMINAL_TERMINAL_H

#include "helpers/tty/terminal/guard.h"

#include <optional>
#include <string>

/// The controlling terminal. Its settings are restored when this object is destroyed or this process is killed.
class Terminal {
 public:
  /// Throws a `std::runtime_error` if there is none.
  Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal();

  int Get() const { return descriptor; }

  /// The name of its device without "/dev/", such as "pts/3"; "" if it is unknown.
  std::string Name() const;

  /// Returns false while another front end takes keys from this terminal. If the device cannot be opened by its
  /// name, as after su, this is not known, and the result is true.
  bool Reserve();

  /// Call it after `Reserve`, before `TakeKeys`, and before there are secrets in memory, because it forks.
  /// `socket`: see `Guard`.
  void StartGuard(int socket) { guard.emplace(descriptor, socket, reservation); }

  /// Changes the settings of the reserved terminal, so that every key arrives at once. Throws a
  /// `std::runtime_error` if the guard has been killed.
  void TakeKeys();

  /// Restores the settings until the next `TakeKeys`. Others may reserve the terminal now.
  void LeaveKeys();

  bool IsForeground() const;

  /// Returns what has been typed; empty if nothing has, or if the terminal is gone (see `IsGone`).
  std::string Read();
  bool IsGone() const { return isGone; }

  /// How many characters `ShowLine` has room for.
  std::size_t Width() const;

  /// Overwrites the current line with the text, cut to the width of the window.
  void ShowLine(const std::string& text);
  /// Writes the text and starts a new line.
  void Say(const std::string& text);

 private:
  void Write(const std::string& text) const;

  int descriptor;
  int reservation = -1;
  std::optional<Guard> guard;
  TakenSettings settings = {};
  std::size_t shown = 0;  // number of characters on the current line
  bool isGone = false;
};

#endif
