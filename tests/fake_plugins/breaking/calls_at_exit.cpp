// Stays in the process and calls the library when the process exits, after most destructors.

#include "tests/fake_plugins/correct_rng.h"

#include <rngaggregator/aggregator.h>

namespace {

__attribute__((destructor)) void Stop() { ShutDown(); }

class CallsAtExitRng final : public CorrectRng {};

}  // namespace

EXPORT_RNG(CallsAtExitRng)
