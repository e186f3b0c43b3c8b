#ifndef COMBINE_SOURCES_H
#define COMBINE_SOURCES_H

#include <vector>

#include <rngaggregator/combined_rng.h>

/// Throws `std::invalid_argument` with a sentence if a kind or device cannot be one, or a kind appears twice.
void RequireDistinctSources(const std::vector<rng::CombinedSource>& sources);

#endif
