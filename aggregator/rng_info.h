#ifndef AGGREGATOR_RNG_INFO_H
#define AGGREGATOR_RNG_INFO_H

#include <vector>

#include <rngaggregator/provider.h>

/// One loaded provider. A plain record: it owns neither; the list that holds it does.
struct RngInfoEx {
  void* handle;            ///< the plug-in's library, closed with `dlclose`
  IRngProvider* provider;  ///< given back through `Release`
};

/// The owning list of loaded providers, in catalogue order.
///
/// The destructor closes the libraries that are still open, first to last, without releasing their
/// providers: a host that unloads the aggregator while started gets no more calls into its
/// plug-ins.
class RngInfoVector : public std::vector<RngInfoEx> {
 public:
  RngInfoVector() = default;
  RngInfoVector(const RngInfoVector&) = delete;
  RngInfoVector& operator=(const RngInfoVector&) = delete;
  virtual ~RngInfoVector();
};

#endif
