#ifndef AGGREGATOR_LOAD_PROVIDER_H
#define AGGREGATOR_LOAD_PROVIDER_H

#include "aggregator/rng_info.h"
#include "providers/catalogue.h"

/// Tries one catalogue row and appends its provider to `providers` if it is usable. An unusable row
/// leaves nothing behind.
///
/// Threads: call it under the aggregator's lock.
/// Failure: when plug-in code throws, the row's library is closed and its provider is not released.
///          When `providers` cannot grow, the library stays open.
void LoadProvider(const ProviderCatalogueEntry& row, IRngSettings* settings,
                  RngInfoVector& providers);

#endif
