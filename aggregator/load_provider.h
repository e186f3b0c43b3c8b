#ifndef AGGREGATOR_LOAD_PROVIDER_H
#define AGGREGATOR_LOAD_PROVIDER_H

#include "aggregator/rng_info.h"
#include "providers/catalogue.h"

/// Tries one catalogue row and appends its provider to `providers` when it is usable. A row that
/// cannot be used leaves nothing behind. Call it under the lock.
///
/// When plug-in code throws, the row's library is closed and its provider is not released; when
/// `providers` cannot grow, the library stays open.
void LoadProvider(const ProviderCatalogueEntry& row, IRngSettings* settings,
                  RngInfoVector& providers);

#endif
