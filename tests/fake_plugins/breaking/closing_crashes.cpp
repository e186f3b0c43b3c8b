// Crashes while it is closed.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class ClosingCrashesRng final : public CorrectRng {
 public:
  ~ClosingCrashesRng() { ::abort(); }
};

}  // namespace

EXPORT_RNG(ClosingCrashesRng)
