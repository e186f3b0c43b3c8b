#include "quality/block_chance.h"

#include "quality/block_limits.h"
#include "quality/distributions.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace {

// The probability of each number of runs, up to the largest that a block may have.
using Counts = std::vector<double>;

// The numbers of runs that are considered at some bit: those at most 500 away from the mean, which is more than
// ten standard deviations.
struct Window {
  Window(double mean, std::size_t size)
      : begin(static_cast<std::size_t>(std::max(0.0, mean - 500))),
        end(std::min(size, static_cast<std::size_t>(mean + 500))) {}
  const std::size_t begin;
  const std::size_t end;
};

// The distribution of the number of runs of ones of one length, updated bit by bit. A run is counted at the
// zero that ends it; a run of the last class, which may grow, is counted as soon as it is long enough. All bits
// from the zero before the run to the bit at which it is counted are known; `known` is their number.
class RunsOfOnes {
 public:
  RunsOfOnes(std::uint32_t length, std::uint32_t most)
      : mayGrow(length == kRunLengths),
        known(mayGrow ? length : length + 1),
        before(most + 1),
        now(most + 1),
        zeros(known + 1, Counts(most + 1)) {
    now[0] = 1;
    zeros[0] = now;  // as if a zero preceded the first bit
  }

  void AddBit() {
    ++bits;
    std::swap(now, before);
    const double weight = std::ldexp(1, -static_cast<int>(known));
    const Window window(bits * weight / 2, now.size());
    const Counts& counted = zeros[(bits + 1) % zeros.size()];  // `known` bits ago; none at first
    now[window.begin] = before[window.begin] - weight * counted[window.begin];
    for (std::size_t k = window.begin + 1; k < window.end; ++k) {
      now[k] = before[k] + weight * (counted[k - 1] - counted[k]);
    }
    Counts& zero = zeros[bits % zeros.size()];
    for (std::size_t k = window.begin; k < window.end; ++k) {
      zero[k] = mayGrow ? before[k] / 2 : now[k] - before[k] / 2;
    }
  }

  // The probability of a number from `least` to `most`, given that the last bit is a zero.
  double GetChanceBeforeZero(std::uint32_t least) const {
    const Counts& cases = zeros[bits % zeros.size()];
    return 2 * std::accumulate(cases.begin() + least, cases.end(), 0.0);
  }

 private:
  const bool mayGrow;
  const std::uint32_t known;
  std::uint32_t bits = 0;
  Counts before;
  Counts now;
  std::vector<Counts> zeros;  // the cases in which a bit is a zero, for the latest bits
};

double GetRunChance(std::uint32_t length, const RunLimits& limits) {
  RunsOfOnes runs(length, limits.most);
  for (std::uint32_t i = 0; i <= kBlockBits; ++i)
    runs.AddBit();  // a zero after the block ends its last run
  return 1 - runs.GetChanceBeforeZero(limits.least);
}

double GetRunsChance() {
  double chance = 0;
  for (std::uint32_t i = 0; i < kRunLengths; ++i) chance += GetRunChance(i + 1, kRunLimits[i]);
  return 2 * chance;  // runs of zeros are as likely as runs of ones
}

// A run of kLongRun equal bits has kEqual bits that equal the one before them. `without[i]` is the probability
// that the first i comparisons of neighbours have no kEqual such bits in a row.
double GetLongRunChance() {
  constexpr std::uint32_t kEqual = kLongRun - 1;
  const double chance = std::ldexp(1, -static_cast<int>(kEqual));
  std::vector<double> without(kBlockBits, 1.0);
  without[kEqual] = 1 - chance;
  for (std::uint32_t i = kEqual + 1; i < kBlockBits; ++i) {
    // The first such row ends here; it follows a difference, and there was no row before that.
    without[i] = without[i - 1] - without[i - kEqual - 1] * chance / 2;
  }
  return 1 - without[kBlockBits - 1];
}

double GetPokerChance() {
  return (GetChiSquareTails(kPokerLow / 100.0, 15) + GetChiSquareTails(kPokerHigh / 100.0, 15)) / 2;
}

}  // namespace

BlockChances GetBlockChances() {
  return {GetCoinTails(kBlockBits, kMostOnes + 1), GetPokerChance(), GetRunsChance(),
          GetLongRunChance()};
}

std::uint64_t GetMostFailingBlocks(std::uint64_t blocks, double chance, double falseAlarm) {
  std::uint64_t most = 0;
  while (GetBinomialTail(blocks, chance, most + 1) > falseAlarm) ++most;
  return most;
}
