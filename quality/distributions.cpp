#include "quality/distributions.h"

#include <algorithm>
#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/normal.hpp>

namespace {

using boost::math::cdf;
using boost::math::complement;

double Double(double tail) { return std::min(1.0, 2 * tail); }

}  // namespace

double GetBinomialTail(std::uint64_t trials, double probability, std::uint64_t count) {
  if (count == 0) return 1;
  if (count > trials) return 0;
  const boost::math::binomial_distribution<> successes(static_cast<double>(trials), probability);
  return cdf(complement(successes, static_cast<double>(count - 1)));
}

double GetCoinTails(std::uint64_t trials, std::uint64_t count) {
  return Double(GetBinomialTail(trials, 0.5, std::max(count, trials - count)));
}

double GetChiSquareTails(double value, double degreesOfFreedom) {
  const boost::math::chi_squared_distribution<> distribution(degreesOfFreedom);
  return Double(std::min(cdf(distribution, value), cdf(complement(distribution, value))));
}

double GetNormalTails(double value) {
  return Double(cdf(complement(boost::math::normal_distribution<>(), std::abs(value))));
}
