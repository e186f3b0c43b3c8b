// A plug-in without a fault that keeps no log: it takes no lock and allocates nothing.

#include "tests/fake_plugins/simple_rng.h"

namespace {

class StubRng final : public SimpleRng {
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }
