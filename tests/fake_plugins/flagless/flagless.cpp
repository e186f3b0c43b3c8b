// A plug-in without capability bits, with a control character in its description.

#include "tests/fake_plugins/simple_rng.h"

namespace {

class FlaglessRng final : public SimpleRng {
 public:
  std::int32_t GetDescription(char* buffer) override { return Report("A quiet\033source", buffer); }
  std::uint32_t GetFlags() override { return 0; }
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }
