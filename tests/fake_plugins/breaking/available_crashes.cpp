// Crashes when asked whether it is available.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class AvailableCrashesRng final : public CorrectRng {
 public:
  bool IsAvailable() override { ::abort(); }
};

}  // namespace

EXPORT_RNG(AvailableCrashesRng)
