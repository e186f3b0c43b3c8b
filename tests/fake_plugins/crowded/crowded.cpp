// Ends the process when it is available and another of its making is open, too.

#include "tests/fake_plugins/simple_rng.h"

#include <cstdlib>

namespace {

class CrowdedRng final : public SimpleRng {
 public:
  bool IsAvailable() override {
    if (std::getenv("RNG_CROWDED")) std::abort();
    ::setenv("RNG_CROWDED", "1", 1);
    return true;
  }
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }
