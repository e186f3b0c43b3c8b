// Each byte that it draws is 0 or 255.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class OneBitBytesRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    CorrectRng::Generate(buffer, size);
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = (bytes[i] & 1U) != 0 ? 0xFF : 0;
    return true;
  }
};

}  // namespace

EXPORT_RNG(OneBitBytesRng)
