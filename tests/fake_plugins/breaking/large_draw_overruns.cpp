// Writes one byte more than a draw asks for, if it is larger than a block of its source.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class LargeDrawOverrunsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    constexpr std::size_t kBlock = 8192;
    return CorrectRng::Generate(buffer, size > kBlock ? size + 1 : size);
  }
};

}  // namespace

EXPORT_RNG(LargeDrawOverrunsRng)
