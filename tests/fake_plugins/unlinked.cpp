// Asks the library for a generator, and is not linked with the library.

#include "tests/fake_plugins/correct_rng.h"

#include <rngaggregator/aggregator.h>

namespace {

class UnlinkedRng final : public CorrectRng {
 public:
  bool SelfTest() override { return GetRng("bioqt") == nullptr; }
};

}  // namespace

EXPORT_RNG(UnlinkedRng)
