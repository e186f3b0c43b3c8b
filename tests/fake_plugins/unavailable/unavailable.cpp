// A plug-in that is not available.

#include "tests/fake_plugins/simple_rng.h"

namespace {

class UnavailableRng final : public SimpleRng {
 public:
  bool IsAvailable() override { return false; }
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }
