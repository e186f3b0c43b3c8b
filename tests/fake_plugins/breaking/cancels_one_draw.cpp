// Cancel ends one of the draws that wait.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <semaphore.h>

namespace {

class CancelsOneDrawRng final : public CorrectRng {
 public:
  CancelsOneDrawRng() { ::sem_init(&cancelled, 0, 0); }

  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    ++waiting;
    ::sem_wait(&cancelled);
    std::memset(buffer, 0, size);
    return false;
  }
  void Cancel() override {
    if (waiting.exchange(0) != 0) ::sem_post(&cancelled);
  }
  std::uint32_t GetFlags() override { return kRngCapabilityNeedsUser | kRngCapabilityMayBlock; }

 private:
  std::atomic<int> waiting = 0;
  sem_t cancelled = {};
};

}  // namespace

EXPORT_RNG(CancelsOneDrawRng)
