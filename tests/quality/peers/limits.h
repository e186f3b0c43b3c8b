#ifndef TESTS_QUALITY_PEERS_LIMITS_H
#define TESTS_QUALITY_PEERS_LIMITS_H

#include "tests/quality/peers/streams.h"

/// Adds the sources whose blocks lie just within and just beyond one limit.
void AddLimits(std::vector<Stream>& streams);

#endif
