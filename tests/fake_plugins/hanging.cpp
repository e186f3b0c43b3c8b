// A plug-in whose device never answers.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class HangingRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    for (;;) ::pause();
  }
};

}  // namespace

EXPORT_RNG(HangingRng)
