// Forgets the terminator.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameHasNoEndRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    constexpr std::int32_t kSize = sizeof KIND - 1;
    if (buffer) std::memcpy(buffer, KIND, kSize);
    return kSize;
  }
};

}  // namespace

EXPORT_RNG(NameHasNoEndRng)
