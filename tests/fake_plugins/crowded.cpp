// Ends the process when it is available and another of its making is open, too.

#include "tests/fake_plugins/correct_rng.h"

#include <cstdlib>

namespace {

class CrowdedRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    if (std::getenv("RNG_CROWDED")) std::abort();
    ::setenv("RNG_CROWDED", "1", 1);
    return true;
  }
};

}  // namespace

EXPORT_RNG(CrowdedRng)
