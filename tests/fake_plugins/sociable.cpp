// Asks the library for another generator when it is asked whether it is available: one kind is so only
// where that is there, another kind only where it is not.

#include "tests/fake_plugins/correct_rng.h"

#include <rngaggregator/aggregator.h>

namespace {

class SociableRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    const bool isAlone = GetRng("bioqt") == nullptr;
    return IsInitialized() && isAlone == (std::strcmp(KIND, "sobol") == 0);
  }
};

}  // namespace

EXPORT_RNG(SociableRng)
