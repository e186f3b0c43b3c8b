#include "quality/restarts.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

namespace {

constexpr std::size_t kDrawBits = 8 * std::tuple_size_v<FirstDraw>;

std::size_t CountSharedBits(const FirstDraw& one, const FirstDraw& other) {
  const auto [differs, otherDiffers] = std::mismatch(one.begin(), one.end(), other.begin());
  if (differs == one.end()) return kDrawBits;
  const auto difference = static_cast<unsigned char>(*differs ^ *otherDiffers);
  return 8 * static_cast<std::size_t>(differs - one.begin()) +
         static_cast<std::size_t>(std::countl_zero(difference));
}

std::size_t AsLimit(double bits) {
  return std::min(kDrawBits, static_cast<std::size_t>(std::max(std::ceil(bits), 1.0)));
}

// The part of the false alarms that a beginning which all draws share may give. It is small, because it costs
// few bits: with 200 draws, one bit is beyond chance in any case.
constexpr double kPartOfCommon = 0.001;

std::size_t GetLimit(std::size_t draws, double falseAlarm) {
  const auto number = static_cast<double>(draws);
  return AsLimit(std::log2(number * (number - 1) / 2 / (falseAlarm * (1 - kPartOfCommon))));
}

std::size_t GetCommonLimit(std::size_t draws, double falseAlarm) {
  return AsLimit(-std::log2(falseAlarm * kPartOfCommon) / static_cast<double>(draws - 1));
}

// The probability that all draws differ if each takes one of that many seeds.
double GetChanceOfNoneAlike(std::size_t draws, double seeds) {
  if (static_cast<double>(draws) > seeds) return 0;
  double logarithm = 0;
  for (std::size_t i = 1; i < draws; ++i) logarithm += std::log1p(-static_cast<double>(i) / seeds);
  return std::exp(logarithm);
}

}  // namespace

SharedBits CompareFirstDraws(const std::vector<FirstDraw>& draws, double falseAlarm) {
  std::vector<std::size_t> order(draws.size());
  std::iota(order.begin(), order.end(), 0);
  // Equal draws stay in their order, so that the first two of them are reported.
  std::stable_sort(order.begin(), order.end(), [&draws](std::size_t one, std::size_t other) {
    return draws[one] < draws[other];
  });
  // What the first and the last of them share, all share.
  SharedBits found = {0,
                      GetLimit(draws.size(), falseAlarm),
                      0,
                      1,
                      CountSharedBits(draws[order.front()], draws[order.back()]),
                      GetCommonLimit(draws.size(), falseAlarm)};
  for (std::size_t i = 1; i < order.size(); ++i) {
    const std::size_t shared = CountSharedBits(draws[order[i - 1]], draws[order[i]]);
    if (shared <= found.most) continue;
    found.most = shared;
    found.first = std::min(order[i - 1], order[i]);
    found.second = std::max(order[i - 1], order[i]);
  }
  return found;
}

std::size_t GetRuledOutSeedBits(std::size_t draws) {
  constexpr double kMissed = 0.01;
  std::size_t bits = 0;
  while (GetChanceOfNoneAlike(draws, std::ldexp(1, static_cast<int>(bits) + 1)) <= kMissed) ++bits;
  return bits;
}
