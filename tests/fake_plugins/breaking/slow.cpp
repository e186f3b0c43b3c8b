// Breaks nothing; its draws take long, but wait for nobody.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class SlowRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size != 0) ::usleep(350000);
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(SlowRng)
