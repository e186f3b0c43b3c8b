#ifndef QUALITY_RESTARTS_H
#define QUALITY_RESTARTS_H

#include <array>
#include <cstddef>
#include <vector>

/// The first bytes that a generator gives after a start.
using FirstDraw = std::array<unsigned char, 16>;

/// How similar the first draws of several starts are: the longest beginning that two of them share. A generator
/// with few possible seeds gives the same draw twice, and one that mixes its seed badly gives draws with the
/// same beginning.
///
/// Two draws of a perfect source share their first L bits with a probability of 2^-L. There are
/// N (N - 1) / 2 pairs, so some pair does with a probability of at most N (N - 1) / 2 * 2^-L. The limit is
/// the smallest L for which that is at most the false-alarm probability.
///
/// Chance does not explain a shorter beginning, either, if all draws share it: a header that a device sends
/// before its first random bytes, for example. All N share L bits with a probability of 2^-(L (N - 1)).
struct SharedBits {
  std::size_t most;   ///< the bits that the most similar two share; 128 if they are equal
  std::size_t limit;  ///< chance does not explain that many
  std::size_t first;  ///< the two draws, counted from zero
  std::size_t second;
  std::size_t common;       ///< the bits that all of them share
  std::size_t commonLimit;  ///< chance does not explain that many

  bool AreBeyondChance() const { return most >= limit || common >= commonLimit; }
};

/// Needs at least two draws.
SharedBits CompareFirstDraws(const std::vector<FirstDraw>& draws, double falseAlarm);

/// The largest B such that a generator with at most 2^B possible seeds gives two equal draws among that many
/// first draws with a probability of at least 99 %. 0 if there is none.
std::size_t GetRuledOutSeedBits(std::size_t draws);

#endif
