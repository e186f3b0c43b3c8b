#include "helpers/gathering/self_test.h"

#include "helpers/gathering/gathering.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace {

// The answer to the events in `FillForSelfTest`, computed with other implementations.
constexpr unsigned char kKnownAnswer[] = {
    0xb4, 0x99, 0xe9, 0x25, 0x5e, 0x97, 0xb4, 0xb0, 0x1c, 0x7e, 0x4f, 0x29, 0xa5, 0xf6, 0xf3, 0x5c,
    0x78, 0x57, 0x3e, 0xe5, 0xb6, 0xe9, 0xdc, 0xe0, 0xca, 0xa9, 0x90, 0x4d, 0xa3, 0x69, 0xde, 0x2b};

void FillForSelfTest(Gathering& gathering) {
  std::chrono::nanoseconds now = 1s;
  for (std::uint32_t i = 0; i < 200; ++i) {
    now += 1ms * (50 + i * 29 % 97 * 3) + 1ns * i;
    gathering.Add(KeyPress{now, 'a' + i % 26, true});
  }
  gathering.Add(Motion{123456789ns, -5, 70000, 3});
}

bool GivesKnownAnswer() {
  SystemBytes system;
  for (std::size_t i = 0; i < system.size(); ++i) system[i] = static_cast<unsigned char>(i);
  Gathering gathering(system, false);
  FillForSelfTest(gathering);
  if (!gathering.IsComplete() || gathering.HasAlarm()) return false;
  unsigned char bytes[sizeof kKnownAnswer];
  gathering.Finish().Generate(bytes, sizeof bytes);
  return std::equal(std::begin(bytes), std::end(bytes), kKnownAnswer);
}

// The same bend of the pointer's path over and over.
bool NoticesRepetition() {
  Gathering gathering({}, false);
  for (int i = 0; i < 40; ++i) gathering.Add(Motion{8ms * i, i * i, 0, 0});
  return gathering.HasAlarm();
}

}  // namespace

bool TestGathering() { return GivesKnownAnswer() && NoticesRepetition(); }
