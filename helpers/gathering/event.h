#ifndef HELPERS_GATHERING_EVENT_H
#define HELPERS_GATHERING_EVENT_H

#include <chrono>
#include <cstdint>

/// What a user did. The times are those of CLOCK_MONOTONIC, in full resolution.

struct KeyPress {
  std::chrono::nanoseconds time;
  std::uint32_t key;  ///< its code or character
  bool isAlone;       ///< false if it arrived together with others, as those of a paste do
};

/// A motion of the pointer, or a change of a button.
struct Motion {
  std::chrono::nanoseconds time;
  std::int32_t x;  ///< in pixels
  std::int32_t y;
  std::uint32_t buttons;
};

#endif
