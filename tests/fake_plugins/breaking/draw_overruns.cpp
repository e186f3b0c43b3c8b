// Draws whole words, and one too many.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class DrawOverrunsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    return CorrectRng::Generate(buffer, (size + 3) / 4 * 4);
  }
};

}  // namespace

EXPORT_RNG(DrawOverrunsRng)
