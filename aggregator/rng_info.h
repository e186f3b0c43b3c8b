#ifndef AGGREGATOR_RNG_INFO_H
#define AGGREGATOR_RNG_INFO_H

#include <vector>

#include <rngaggregator/provider.h>

/// One loaded provider. A plain record that owns nothing; the list that contains it does.
struct RngInfoEx {
  void* handle;            ///< the plug-in's library, closed with `dlclose`
  IRngProvider* provider;  ///< ended by `Release`
};

/// The owning list of loaded providers, in catalogue order.
///
/// The destructor closes the libraries that are still open, first to last, without releasing their
/// providers: if a host unloads the aggregator while started, no provider is called any more.
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
