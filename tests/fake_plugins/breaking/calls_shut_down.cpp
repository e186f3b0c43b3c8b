// Stops the aggregator when it is released.

#include "tests/fake_plugins/correct_rng.h"

#include <rngaggregator/aggregator.h>

namespace {

class CallsShutDownRng final : public CorrectRng {
 public:
  void Release() override { ShutDown(); }
};

}  // namespace

EXPORT_RNG(CallsShutDownRng)
