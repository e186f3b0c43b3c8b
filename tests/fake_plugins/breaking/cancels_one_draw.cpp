// Cancel ends one of the draws that wait.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <semaphore>

namespace {

class CancelsOneDrawRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    ++waiting;
    cancelled.acquire();
    std::memset(buffer, 0, size);
    return false;
  }
  void Cancel() override {
    if (waiting.exchange(0) != 0) cancelled.release();
  }
  std::uint32_t GetFlags() override { return kRngCapabilityNeedsUser | kRngCapabilityMayBlock; }

 private:
  std::atomic<int> waiting = 0;
  std::binary_semaphore cancelled{0};
};

}  // namespace

EXPORT_RNG(CancelsOneDrawRng)
