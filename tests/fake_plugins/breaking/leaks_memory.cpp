// Forgets a block of memory each time.

#include "tests/fake_plugins/breaking/correct_rng.h"

namespace {

class LeaksMemoryRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return std::malloc(1) != nullptr; }
};

}  // namespace

EXPORT_RNG(LeaksMemoryRng)
