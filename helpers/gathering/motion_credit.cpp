#include "helpers/gathering/motion_credit.h"

#include <algorithm>
#include <cstdlib>

using namespace std::chrono_literals;

std::optional<MotionCredit::Bend> MotionCredit::Take(const Motion& motion) {
  if (samples > 0 && motion.time - last.time < 8ms) return {};
  const Bend bend = {motion.x - 2 * last.x + beforeLast.x, motion.y - 2 * last.y + beforeLast.y};
  const bool hasBend = samples == 2;
  samples = std::min(samples + 1, 2);
  beforeLast = last;
  last = motion;
  if (!hasBend || (std::abs(bend.x) < 2 && std::abs(bend.y) < 2)) return {};
  return bend;
}
