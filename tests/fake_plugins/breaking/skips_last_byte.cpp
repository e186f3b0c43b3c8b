// Draws whole words only.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class SkipsLastByteRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    return CorrectRng::Generate(buffer, size < 4 ? size : size - size % 4);
  }
};

}  // namespace

EXPORT_RNG(SkipsLastByteRng)
