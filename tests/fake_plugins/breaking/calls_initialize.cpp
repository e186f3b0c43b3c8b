// Starts the aggregator when asked whether it is available.

#include "tests/fake_plugins/correct_rng.h"

#include <rngaggregator/aggregator.h>

namespace {

class CallsInitializeRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    Initialize(nullptr);
    return true;
  }
};

}  // namespace

EXPORT_RNG(CallsInitializeRng)
