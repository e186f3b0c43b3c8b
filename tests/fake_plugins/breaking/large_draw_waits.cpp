// A large draw holds the lock while it waits, and Cancel takes the lock first.

#include "tests/fake_plugins/correct_rng.h"

#include <mutex>
#include <unistd.h>

namespace {

class LargeDrawWaitsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size < 65536) return CorrectRng::Generate(buffer, size);
    const std::lock_guard guard(lock);
    for (;;) ::pause();
  }
  void Cancel() override { const std::lock_guard guard(lock); }
  std::uint32_t GetFlags() override { return kRngCapabilityHardware | kRngCapabilityMayBlock; }

 private:
  std::mutex lock;
};

}  // namespace

EXPORT_RNG(LargeDrawWaitsRng)
