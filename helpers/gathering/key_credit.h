#ifndef HELPERS_GATHERING_KEY_CREDIT_H
#define HELPERS_GATHERING_KEY_CREDIT_H

#include "helpers/gathering/event.h"

/// How many bits of entropy a key press is credited with. The figures are fixed and never estimated from the data: a
/// program that imitates a person could obtain any estimate.
class KeyCredit {
 public:
  /// `isRemote`: the keys come over a network, so an eavesdropper sees when they are pressed.
  explicit KeyCredit(bool isRemote) : bits(isRemote ? 1 : 2) {}

  /// The credit of the next press: 2 bits, or 1 if remote. No credit for
  /// - the first press,
  /// - presses that arrive together,
  /// - a press less than 8 ms after the previous one,
  /// - the third and every later press of the same key in a row, as auto-repeat sends them,
  /// - a press whose interval is within 2 ms of one of the two previous intervals, as a machine's is.
  int Take(const KeyPress& press);

 private:
  using Time = std::chrono::nanoseconds;

  bool IsRegular(Time interval) const;

  const int bits;
  bool isPressed = false;  // whether any key has been pressed yet
  int sameKeys = 0;        // presses of the last key in a row
  std::uint32_t lastKey = 0;
  Time lastTime{};
  // The last and the one before. 0 means none, and is not near any interval that counts.
  Time intervals[2] = {};
};

#endif
