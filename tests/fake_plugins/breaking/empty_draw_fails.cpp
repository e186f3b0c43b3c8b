// Takes a draw of nothing for a mistake.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class EmptyDrawFailsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    return size != 0 && CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(EmptyDrawFailsRng)
