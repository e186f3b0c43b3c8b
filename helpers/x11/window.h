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
  std::chrono::nanoseconds time;  ///< when it arrived, by CLOCK_MONOTONIC
  std::uint32_t code;  ///< of the key; for a motion, the buttons and modifiers that are down
  std::int32_t x;      ///< of the pointer in the window, in pixels
  std::int32_t y;
  std::uint64_t serverTime;  ///< in milliseconds
};

/// A window with its own connection to the X server. It receives only its own events, and never grabs the keyboard or
/// the pointer. Without a window manager it takes the keyboard focus when it appears.
class UserWindow {
 public:
  /// Opens the window, large enough for the picture. Throws a `std::runtime_error` if there is no display.
  /// The process exits during any operation if the server is lost or reports an error.
  UserWindow(const std::string& title, const Picture& picture);
  UserWindow(const UserWindow&) = delete;
  UserWindow& operator=(const UserWindow&) = delete;
  ~UserWindow();

  /// A descriptor that becomes readable when an event arrives.
  int Get() const;

  /// Returns the input since the last call, without events that other programs have sent.
  std::vector<UserInput> Read();

  /// Whether the user has closed the window or pressed Escape since the last call.
  bool TakeRefusal();

  /// Paints the picture, unless the window already shows it.
  void Show(const Picture& picture);

 private:
  class Connection;

  std::unique_ptr<Connection> connection;
};

#endif
