// Takes from its source what that gives at once, and no more.

#include "tests/fake_plugins/correct_rng.h"

#include <algorithm>

namespace {

class FillsOnlyTheBeginningRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    return CorrectRng::Generate(buffer, std::min<std::size_t>(size, 8192));
  }
};

}  // namespace

EXPORT_RNG(FillsOnlyTheBeginningRng)
