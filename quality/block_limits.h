#ifndef QUALITY_BLOCK_LIMITS_H
#define QUALITY_BLOCK_LIMITS_H

#include <cstddef>
#include <cstdint>

/// The limits of FIPS 140-2, change notice 1, for a block of 20,000 bits. In the standard, the limits for ones
/// and for the poker statistic are exclusive, and those for runs inclusive.
constexpr std::uint32_t kBlockBits = 20000;

constexpr std::uint32_t kFewestOnes = 9726;
constexpr std::uint32_t kMostOnes = 10274;

/// In hundredths. A statistic of exactly this value fails.
constexpr std::int64_t kPokerLow = 216;
constexpr std::int64_t kPokerHigh = 4617;

/// How many runs of zeros, and how many of ones, a block may have.
struct RunLimits {
  std::uint32_t least;
  std::uint32_t most;
};
constexpr std::size_t kRunLengths = 6;  ///< the last one stands for that length and all above
constexpr RunLimits kRunLimits[kRunLengths] = {{2315, 2685}, {1114, 1386}, {527, 723},
                                               {240, 384},   {103, 209},   {103, 209}};

constexpr std::uint32_t kLongRun = 26;  ///< a run of this length or more fails

#endif
