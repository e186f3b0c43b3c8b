// Keeps ever fewer blocks of memory, as a cache does that is filled by chance: 40,000 bytes in all, half of what is
// left in 500 uses. It stays mapped, so that it knows how much it has kept.

#include "tests/fake_plugins/correct_rng.h"

namespace {

double g_rest = 40'000;
double g_owed = 0;

class FillsACacheRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings*) override {
    g_owed += g_rest / 700;
    g_rest -= g_rest / 700;
    for (; g_owed >= 64; g_owed -= 64) kept = std::malloc(48);
  }

 private:
  void* volatile kept = nullptr;
};

}  // namespace

EXPORT_RNG(FillsACacheRng)
