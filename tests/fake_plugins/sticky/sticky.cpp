// A plug-in without a fault that stays in the process when it is closed.

#include "tests/fake_plugins/simple_rng.h"

namespace {

class StickyRng final : public SimpleRng {
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }
