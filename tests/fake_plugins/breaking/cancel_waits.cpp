// A draw holds the lock while it waits, and Cancel takes the lock first.

#include "tests/fake_plugins/correct_rng.h"

#include <mutex>
#include <unistd.h>

namespace {

class CancelWaitsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    const std::lock_guard guard(lock);
    while (!isCancelled) ::usleep(1000);
    std::memset(buffer, 0, size);
    return false;
  }
  void Cancel() override {
    const std::lock_guard guard(lock);
    isCancelled = true;
  }
  std::uint32_t GetFlags() override { return kRngCapabilityNeedsUser | kRngCapabilityMayBlock; }

 private:
  std::mutex lock;
  bool isCancelled = false;
};

}  // namespace

EXPORT_RNG(CancelWaitsRng)
