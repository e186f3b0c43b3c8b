#include "helpers/gathering/key_credit.h"

#include <algorithm>

using namespace std::chrono_literals;

int KeyCredit::Take(const KeyPress& press) {
  const Time interval = press.time - lastTime;
  sameKeys = presses > 0 && press.key == lastKey ? sameKeys + 1 : 1;
  const bool counts =
      presses > 0 && press.isAlone && interval >= 8ms && sameKeys < 3 && !IsRegular(interval);
  if (presses > 0) {
    intervals[1] = intervals[0];
    intervals[0] = interval;
  }
  presses = std::min(presses + 1, 3);
  lastKey = press.key;
  lastTime = press.time;
  return counts ? bits : 0;
}

bool KeyCredit::IsRegular(Time interval) const {
  for (int i = 0; i < presses - 1; ++i) {
    if (std::chrono::abs(interval - intervals[i]) <= 2ms) return true;
  }
  return false;
}
