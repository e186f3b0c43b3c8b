// Crashes when it draws.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class DrawCrashesRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size != 0) ::abort();
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(DrawCrashesRng)
