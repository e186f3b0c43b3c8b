// A plug-in whose Release throws what is no standard exception.

#include "tests/fake_plugins/simple_rng.h"

namespace {

class ThrowingReleaseRng final : public SimpleRng {
 public:
  void Release() override { throw 1; }
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }
