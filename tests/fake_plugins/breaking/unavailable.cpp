// Is never available.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class UnavailableRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return false; }
};

}  // namespace

EXPORT_RNG(UnavailableRng)
