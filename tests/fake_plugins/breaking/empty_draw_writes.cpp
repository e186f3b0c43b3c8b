// Writes also when asked for nothing.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class EmptyDrawWritesRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (buffer) std::memset(buffer, 1, 1);
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(EmptyDrawWritesRng)
