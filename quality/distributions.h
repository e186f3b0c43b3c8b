#ifndef QUALITY_DISTRIBUTIONS_H
#define QUALITY_DISTRIBUTIONS_H

#include <cstdint>

/// Tails of the distributions that a perfect source follows: the probability of a result that is at least
/// as far out as the one seen.

/// At least `count` successes in `trials` independent trials.
double GetBinomialTail(std::uint64_t trials, double probability, std::uint64_t count);

/// As many heads or as few as `count` in `trials` throws of a fair coin, or farther from one half.
double GetCoinTails(std::uint64_t trials, std::uint64_t count);

/// A value that large or that small, whichever is less likely, and the same at the other end.
double GetChiSquareTails(double value, double degreesOfFreedom);
double GetNormalTails(double value);

#endif
