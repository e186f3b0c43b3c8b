#ifndef AGGREGATOR_RNG_INFO_H
#define AGGREGATOR_RNG_INFO_H

#include <vector>

#include <rngaggregator/provider.h>

/// One loaded provider. A plain record that owns nothing; the list that contains it does. Both are null
/// once the provider is released and closed, which shows only if a later `Release` throws.
struct RngInfoEx {
  void* handle;            ///< the plug-in's library, closed with `dlclose`
  IRngProvider* provider;  ///< ended by `Release`
};

/// The owning list of loaded providers, in catalogue order. If a `Release` threw during a stop,
/// the providers that it left come before those that the next start adds.
///
/// The destructor closes the libraries that are still open, first to last, and calls no provider, not
/// even `Release`.
///
/// Derives publicly, because it is a vector in every respect but its end. The destructor is virtual, so
/// that a pointer to the class ends it properly.
class RngInfoVector : public std::vector<RngInfoEx> {
 public:
  RngInfoVector() = default;
  RngInfoVector(const RngInfoVector&) = delete;
  RngInfoVector& operator=(const RngInfoVector&) = delete;
  virtual ~RngInfoVector();
};

#endif
