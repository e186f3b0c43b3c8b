// Crashes while it is opened.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class OpeningCrashesRng final : public CorrectRng {
 public:
  OpeningCrashesRng() { ::abort(); }
};

}  // namespace

EXPORT_RNG(OpeningCrashesRng)
