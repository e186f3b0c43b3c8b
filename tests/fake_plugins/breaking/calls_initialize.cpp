// Starts the aggregator when asked whether it is available, while the macro AGAIN says so.

#include "tests/fake_plugins/correct_rng.h"

#include <rngaggregator/aggregator.h>

#ifndef AGAIN
#define AGAIN false
#endif

namespace {

class CallsInitializeRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    do Initialize(nullptr);
    while (AGAIN);
    return true;
  }
};

}  // namespace

EXPORT_RNG(CallsInitializeRng)
