// A plug-in whose device never answers.

#include "tests/fake_plugins/simple_rng.h"

#include <unistd.h>

namespace {

class HangingRng final : public SimpleRng {
 public:
  bool IsAvailable() override {
    for (;;) ::pause();
  }
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }
