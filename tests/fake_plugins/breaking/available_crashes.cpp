// Crashes when asked whether it is available.

#include "tests/fake_plugins/breaking/correct_rng.h"

#include <csignal>

namespace {

class AvailableCrashesRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return ::raise(SIGSEGV) != 0; }
};

}  // namespace

EXPORT_RNG(AvailableCrashesRng)
