#include "helpers/gathering/key_credit.h"

#include <algorithm>
#include <iterator>

using namespace std::chrono_literals;

int KeyCredit::Take(const KeyPress& press) {
  const Time interval = press.time - lastTime;
  sameKeys = isPressed && press.key == lastKey ? sameKeys + 1 : 1;
  const bool counts =
      isPressed && press.isAlone && interval >= 8ms && sameKeys < 3 && !IsRegular(interval);
  if (isPressed) {
    intervals[1] = intervals[0];
    intervals[0] = interval;
  }
  isPressed = true;
  lastKey = press.key;
  lastTime = press.time;
  return counts ? bits : 0;
}

bool KeyCredit::IsRegular(Time interval) const {
  return std::any_of(std::begin(intervals), std::end(intervals), [interval](Time earlier) {
    return std::chrono::abs(interval - earlier) <= 2ms;
  });
}
