#ifndef QUALITY_BYTE_STATISTICS_H
#define QUALITY_BYTE_STATISTICS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

/// A statistic, and the probability that bytes of a perfect source give one that is at least as extreme, in
/// either direction.
struct Statistic {
  double value;
  double probability;
};

/// `GetChiSquare` and `GetSerialCorrelation` do not judge fewer bytes: the distributions from which they take
/// their probabilities are then too far from the exact ones.
constexpr std::uint64_t kFewestBytes = 4096;

/// What can be said about a stream of bytes by counting them.
class ByteStatistics {
 public:
  void Feed(const void* bytes, std::size_t size);

  std::uint64_t Size() const { return total; }
  const std::array<std::uint64_t, 256>& Counts() const { return counts; }

  /// How often this bit is one; bit 7 is the most significant.
  std::uint64_t CountOnes(unsigned bit) const;

  /// Whether the 256 values are equally frequent: Pearson's statistic, with 255 degrees of freedom. Too
  /// equal is unlikely, too.
  std::optional<Statistic> GetChiSquare() const;

  /// The correlation of each byte with the next; the last one is followed by the first.
  std::optional<Statistic> GetSerialCorrelation() const;

  /// The part of ones in this bit. Nothing without bytes.
  std::optional<Statistic> GetBitFrequency(unsigned bit) const;

 private:
  std::array<std::uint64_t, 256> counts = {};
  std::uint64_t total = 0;
  std::int64_t products = 0;  // of all neighbours, each as Centred
  unsigned char first = 0;
  unsigned char last = 0;
};

#endif
