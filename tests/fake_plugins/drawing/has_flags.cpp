// Its capability bits are the number RNG_TEST_FLAGS, where that is set.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class FlagsRng final : public CorrectRng {
 public:
  std::uint32_t GetFlags() override {
    const char* const flags = std::getenv("RNG_TEST_FLAGS");
    return flags ? static_cast<std::uint32_t>(std::strtoul(flags, nullptr, 0))
                 : CorrectRng::GetFlags();
  }
};

}  // namespace

EXPORT_RNG(FlagsRng)
