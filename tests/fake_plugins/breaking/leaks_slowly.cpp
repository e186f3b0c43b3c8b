// Forgets a small block of memory in about every eighth use.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class LeaksSlowlyRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings*) override {
    unsigned char chance = 0;
    ::getrandom(&chance, 1, 0);
    if (chance % 8 == 0) forgotten = std::malloc(64);
  }

 private:
  void* volatile forgotten = nullptr;
};

}  // namespace

EXPORT_RNG(LeaksSlowlyRng)
