// Breaks nothing; each of its draws takes 3 s, and it draws one after the other.

#include "tests/fake_plugins/correct_rng.h"

#include <mutex>
#include <unistd.h>

namespace {

class DrawsForSecondsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    const std::lock_guard guard(lock);
    ::sleep(3);
    return CorrectRng::Generate(buffer, size);
  }
  bool SelfTest() override {
    unsigned char bytes[32];
    return Generate(bytes, sizeof bytes);
  }
  std::uint32_t GetFlags() override { return kRngCapabilityHardware | kRngCapabilityMayBlock; }

 private:
  std::mutex lock;
};

}  // namespace

EXPORT_RNG(DrawsForSecondsRng)
