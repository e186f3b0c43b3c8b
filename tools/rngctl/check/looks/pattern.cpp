// Order within a draw.

#include "tools/rngctl/check/looks/faults.h"

#include <algorithm>
#include <functional>

#include <rngaggregator/health.h>

namespace {

// As for checked draws. Good bytes give nine equal ones in a row at one of 2^64 places, and 22 more of the
// first byte of a window in one of 2.7 * 10^15. In 522,809 bytes and 1,057 windows that is 2.9 * 10^-14 and
// 3.9 * 10^-13; equal blocks have 2^-109.
constexpr RngHealthCutoffs kCutoffs = {9, 23, 512, true};

// Nine equal differences in a row: another 2.9 * 10^-14.
constexpr RngHealthCutoffs kCounterCutoffs = {9, 513, 512, false};

constexpr char kRepetitionFix[] =
    "Take each byte from the source once, and let the draw fail if the source has nothing new.";

// The number of bytes up to the one with which the test gives an alarm; 0 if it gives none.
std::size_t FindAlarm(RngHealthTest& test, const Bytes& bytes) {
  if (test.Feed(bytes.data(), bytes.size())) return 0;
  test.Reset();
  std::size_t place = 0;
  while (test.Feed(&bytes[place], 1)) ++place;
  return place + 1;
}

Bytes Differences(const Bytes& bytes) {
  Bytes differences(bytes.size() - 1);
  std::transform(bytes.begin() + 1, bytes.end(), bytes.begin(), differences.begin(),
                 std::minus<>());
  return differences;
}

// From the first byte of a run to its end, beyond the place of the alarm.
Range WholeRun(const Bytes& bytes, std::size_t alarm) {
  Range run = {alarm - kCutoffs.repetitions, alarm};
  while (run.end < bytes.size() && bytes[run.end] == bytes[run.begin]) ++run.end;
  return run;
}

Fault Describe(const RngHealthTest& test, const Bytes& bytes, std::size_t alarm,
               const std::string& draw) {
  switch (test.Alarm()) {
    case RngHealthAlarm::kRepetition:
      return {"In " + draw + ", " + InWords(WholeRun(bytes, alarm)) + " are all equal.",
              kRepetitionFix};
    case RngHealthAlarm::kBlock:
      return {
          "In " + draw + ", " + InWords({alarm - 16, alarm}) + " repeat the 16 bytes before them.",
          kRepetitionFix};
    default:
      break;
  }
  const std::size_t begin = (alarm - 1) / kCutoffs.window * kCutoffs.window;
  return {
      "In " + draw + ", " + std::to_string(kCutoffs.proportion) + " of " + InWords({begin, alarm}) +
          " have the same value.",
      "Return bytes in which every bit is random: if the source has only a few different values, "
      "combine several of them."};
}

std::optional<Fault> FindPatternIn(const Bytes& bytes, const std::string& draw) {
  RngHealthTest test(kCutoffs);
  if (const std::size_t alarm = FindAlarm(test, bytes)) return Describe(test, bytes, alarm, draw);
  RngHealthTest counter(kCounterCutoffs);
  const std::size_t alarm = FindAlarm(counter, Differences(bytes));
  if (alarm == 0) return std::nullopt;
  const Range counted = {alarm - kCounterCutoffs.repetitions, alarm + 1};
  return Fault{"In " + draw + ", " + InWords(counted) +
                   " are a counter: the difference from one byte to the next is always the same.",
               "Return bytes of the source instead of a counter or test pattern."};
}

}  // namespace

std::optional<Fault> FindPattern(const DrawsOfSize& drawn) {
  for (std::size_t i = 0; i < drawn.draws.size(); ++i) {
    const auto fault = FindPatternIn(drawn.draws[i].after, DrawInWords(i, drawn.size));
    if (fault) return fault;
  }
  return std::nullopt;
}
