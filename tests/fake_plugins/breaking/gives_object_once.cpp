// Gives an object once in a process.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class OnceRng final : public CorrectRng {
 public:
  using CorrectRng::IsFirstTime;
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  return OnceRng::IsFirstTime() ? &g_provider : nullptr;
}
