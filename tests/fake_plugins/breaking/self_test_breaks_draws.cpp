// After a self-test its draws fail.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>

namespace {

class SelfTestBreaksDrawsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (!isTested || size == 0) return CorrectRng::Generate(buffer, size);
    std::memset(buffer, 0, size);
    return false;
  }
  bool SelfTest() override {
    isTested = true;
    return true;
  }

 private:
  std::atomic<bool> isTested = false;
};

}  // namespace

EXPORT_RNG(SelfTestBreaksDrawsRng)
