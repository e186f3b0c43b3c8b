#include "quality/byte_statistics.h"

#include "quality/distributions.h"

#include <cmath>

namespace {

// Twice the distance from the middle of all values, so that sums of products stay small.
constexpr std::int64_t Centred(unsigned byte) { return 2 * std::int64_t{byte} - 255; }

}  // namespace

void ByteStatistics::Feed(const void* bytes, std::size_t size) {
  if (size == 0) return;
  const auto* const values = static_cast<const unsigned char*>(bytes);
  if (total == 0) {
    first = values[0];
  } else {
    products += Centred(last) * Centred(values[0]);
  }
  ++counts[values[0]];
  for (std::size_t i = 1; i < size; ++i) {
    ++counts[values[i]];
    products += Centred(values[i - 1]) * Centred(values[i]);
  }
  last = values[size - 1];
  total += size;
}

std::uint64_t ByteStatistics::CountOnes(unsigned bit) const {
  std::uint64_t ones = 0;
  for (std::size_t value = 0; value < counts.size(); ++value) {
    if ((value >> bit & 1) != 0) ones += counts[value];
  }
  return ones;
}

std::optional<Statistic> ByteStatistics::GetChiSquare() const {
  if (total < kFewestBytes) return std::nullopt;
  const double expected = static_cast<double>(total) / 256;
  double sum = 0;
  for (const std::uint64_t count : counts) {
    const double difference = static_cast<double>(count) - expected;
    sum += difference * difference / expected;
  }
  return Statistic{sum, GetChiSquareTails(sum, 255)};
}

// Bytes of a perfect source give a value with the mean -1 / (n - 1) and the variance 1 / n, normally
// distributed as far as their number allows.
std::optional<Statistic> ByteStatistics::GetSerialCorrelation() const {
  if (total < kFewestBytes) return std::nullopt;
  double sum = 0;
  double squares = 0;
  for (unsigned value = 0; value < counts.size(); ++value) {
    const double part = static_cast<double>(counts[value]) * static_cast<double>(Centred(value));
    sum += part;
    squares += part * static_cast<double>(Centred(value));
  }
  const auto number = static_cast<double>(total);
  const double variation = number * squares - sum * sum;
  if (variation == 0) return Statistic{1, 0};  // all bytes are equal
  const auto neighbours = static_cast<double>(products + Centred(last) * Centred(first));
  const double value = (number * neighbours - sum * sum) / variation;
  return Statistic{value, GetNormalTails((value + 1 / (number - 1)) * std::sqrt(number))};
}

std::optional<Statistic> ByteStatistics::GetBitFrequency(unsigned bit) const {
  if (total == 0) return std::nullopt;
  const std::uint64_t ones = CountOnes(bit);
  return Statistic{static_cast<double>(ones) / static_cast<double>(total),
                   GetCoinTails(total, ones)};
}
