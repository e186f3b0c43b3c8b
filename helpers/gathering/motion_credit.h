#ifndef HELPERS_GATHERING_MOTION_CREDIT_H
#define HELPERS_GATHERING_MOTION_CREDIT_H

#include "helpers/gathering/event.h"

#include <optional>

/// Whether a motion of the pointer counts for a bit of entropy. Mice report their position 125 to 1,000
/// times a second, so only samples count: motions at least 8 ms after the sample before.
class MotionCredit {
 public:
  /// The second difference of the position over three samples, if that differs from a straight line at
  /// constant speed: by 2 pixels or more on one axis. A smaller difference is only rounding. The motion then
  /// counts for one bit.
  struct Bend {
    std::int32_t x;
    std::int32_t y;
  };
  std::optional<Bend> Take(const Motion& motion);

 private:
  int samples = 0;  // so far; the first two have no second difference
  Motion last{};
  Motion beforeLast{};
};

#endif
