#ifndef QUALITY_DISTRIBUTIONS_H
#define QUALITY_DISTRIBUTIONS_H

#include <cstdint>

/// Tails of the distributions that a perfect source follows: the probability of a result that is at least
/// as extreme as the observed one.

/// At least `count` successes in `trials` independent trials.
double GetBinomialTail(std::uint64_t trials, double probability, std::uint64_t count);

/// A number of heads that is at least as far from one half as `count`, in `trials` tosses of a fair coin.
double GetCoinTails(std::uint64_t trials, std::uint64_t count);

/// Twice the smaller of the two tails: a value as large, or a value as small.
double GetChiSquareTails(double value, double degreesOfFreedom);
double GetNormalTails(double value);

#endif
