#ifndef HELPERS_GATHERING_MOTION_CREDIT_H
#define HELPERS_GATHERING_MOTION_CREDIT_H

#include "helpers/gathering/event.h"

#include <optional>

/// Whether a motion of the pointer is credited with a bit of entropy. Mice report their position 125 to 1,000
/// times a second, so only samples count: motions at least 8 ms after the sample before.
class MotionCredit {
 public:
  /// The second difference of the position over three samples. `Take` returns it if it is 2 pixels or more on one
  /// axis, and the motion is then credited with one bit. On a straight line at constant speed it is zero, and
  /// anything below 2 pixels is rounding.
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
