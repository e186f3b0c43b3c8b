// Each of the three steps of its start takes half a second, and its report a second.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

void BeSlow() { ::usleep(500'000); }

class SlowStepsRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings*) override { BeSlow(); }
  bool IsAvailable() override {
    BeSlow();
    return true;
  }
};

SlowStepsRng g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  BeSlow();
  return &g_provider;
}

std::int32_t GetRngReport(char*) {
  BeSlow();
  BeSlow();
  return 0;
}
