// Crashes when asked for its name.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>

namespace {

class NameCrashesRng final : public CorrectRng {
 public:
  std::int32_t GetName(char*) override { return ::raise(SIGSEGV); }
};

}  // namespace

EXPORT_RNG(NameCrashesRng)
