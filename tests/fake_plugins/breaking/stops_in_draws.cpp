// Stops the aggregator when it draws.

#include "tests/fake_plugins/correct_rng.h"

#include <rngaggregator/aggregator.h>

namespace {

class StopsInDrawsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    ShutDown();
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(StopsInDrawsRng)
