#ifndef HELPERS_X11_WINDOW_H
#define HELPERS_X11_WINDOW_H

#include "helpers/x11/picture.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

/// What a user did in the window.
struct UserInput {
  enum Type { kPress, kMotion } type;
  std::chrono::nanoseconds time;  ///< of its arrival, of CLOCK_MONOTONIC
  std::uint32_t code;  ///< of the key; for a motion, the buttons and modifiers that are down
  std::int32_t x;      ///< of the pointer in the window, in pixels
  std::int32_t y;
  std::uint64_t serverTime;  ///< in milliseconds
};

/// A window of its own connection with the X server. It takes only events of its own, and never a grab.
/// Without a window manager it takes the keyboard's focus when it appears.
class UserWindow {
 public:
  /// Opens the window, large enough for the picture. Throws a `std::runtime_error` if there is no display.
  /// The process exits during any operation if the server is lost or reports an error.
  UserWindow(const std::string& title, const Picture& picture);
  UserWindow(const UserWindow&) = delete;
  UserWindow& operator=(const UserWindow&) = delete;
  ~UserWindow();

  /// Becomes readable when something happens.
  int Get() const;

  /// What has happened since the last call, without what other programs pretend to have happened.
  std::vector<UserInput> Read();

  /// Whether the user has closed the window or has pressed Escape, since the last call.
  bool TakeRefusal();

  /// Paints the picture, unless the window has it already.
  void Show(const Picture& picture);

 private:
  class Connection;

  std::unique_ptr<Connection> connection;
};

#endif
