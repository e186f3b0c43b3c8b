// A plug-in whose name cannot be used: the answers of GetName are the macros SIZE and SIZE_AGAIN.

#include "tests/fake_plugins/simple_rng.h"

namespace {

class NamelessRng final : public SimpleRng {
 public:
  std::int32_t GetName(char* buffer) override { return buffer ? SIZE_AGAIN : SIZE; }
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }
