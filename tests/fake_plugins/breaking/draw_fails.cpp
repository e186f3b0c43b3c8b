// Is available, but cannot draw.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class DrawFailsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size != 0) std::memset(buffer, 0, size);
    return size == 0;
  }
};

}  // namespace

EXPORT_RNG(DrawFailsRng)
