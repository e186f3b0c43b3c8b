#ifndef HELPERS_SESSION_MONOTONIC_CLOCK_H
#define HELPERS_SESSION_MONOTONIC_CLOCK_H

#include <chrono>
#include <ctime>

/// The time of an event, in full resolution.
inline std::chrono::nanoseconds MonotonicNow() {
  timespec now = {};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

#endif
