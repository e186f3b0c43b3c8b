#ifndef QUALITY_BLOCK_CHANCE_H
#define QUALITY_BLOCK_CHANCE_H

#include <cstdint>

/// The probability that a block of a perfect source fails each of the tests. Computed exactly, except for the
/// poker test, which uses the chi-square distribution instead of the exact one. The runs test has twelve
/// limits; its value is the sum over them.
struct BlockChances {
  double monobit;
  double poker;
  double runs;
  double longRun;

  /// The probability that a block fails, or a little more: a block that fails several tests counts
  /// several times. About 0.0008.
  double Any() const { return monobit + poker + runs + longRun; }
};

/// Takes about a tenth of a second.
BlockChances GetBlockChances();

/// How many of that many blocks may fail: a perfect source exceeds this with a probability of at most
/// `falseAlarm`. `chance` is the probability that one block fails.
std::uint64_t GetMostFailingBlocks(std::uint64_t blocks, double chance, double falseAlarm);

#endif
