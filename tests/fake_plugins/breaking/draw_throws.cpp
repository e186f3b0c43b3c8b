// Throws when it draws.

#include "tests/fake_plugins/correct_rng.h"

#include <stdexcept>

namespace {

class DrawThrowsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size != 0) throw std::runtime_error("no entropy");
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(DrawThrowsRng)
