// Its description has SIZE bytes with the terminator. BEFORE_WRITING is done in the second call.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class DescriptionHasBytesRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char* buffer) override {
    if (!buffer) return SIZE;
    BEFORE_WRITING;
    std::memset(buffer, 'x', SIZE - 1);
    buffer[SIZE - 1] = '\0';
    return SIZE;
  }
};

}  // namespace

EXPORT_RNG(DescriptionHasBytesRng)
