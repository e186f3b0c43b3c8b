// Prints when it draws.

#include "tests/fake_plugins/correct_rng.h"

#include <cstdio>

namespace {

class PrintsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    std::printf("drawing %zu\n", size);
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(PrintsRng)
