// Has no capability.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NoFlagsRng final : public CorrectRng {
 public:
  std::uint32_t GetFlags() override { return 0; }
};

}  // namespace

EXPORT_RNG(NoFlagsRng)
