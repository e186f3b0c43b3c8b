#ifndef OPENSSL_MODULE_DEADLINE_H
#define OPENSSL_MODULE_DEADLINE_H

#include <ctime>

/// The time at which a draw gives up. It is set when the draw begins, and covers everything that the draw waits for.
class Deadline {
 public:
  explicit Deadline(time_t seconds) {
    ::clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += seconds;
  }

  /// On the monotonic clock.
  const timespec& Get() const { return end; }

  /// 0 when the deadline has passed.
  int MillisecondsLeft() const {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const long left = (end.tv_sec - now.tv_sec) * 1000 + (end.tv_nsec - now.tv_nsec) / 1'000'000;
    return left > 0 ? static_cast<int>(left) : 0;
  }

 private:
  timespec end = {};
};

#endif
