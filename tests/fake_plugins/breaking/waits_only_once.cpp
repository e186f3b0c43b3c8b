// After a Cancel no draw waits any more.

#include "tests/fake_plugins/waiting_rng.h"

#include <atomic>

namespace {

class WaitsOnlyOnceRng final : public WaitingRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (!isCancelled || size == 0) return WaitingRng::Generate(buffer, size);
    std::memset(buffer, 0, size);
    return false;
  }
  void Cancel() override {
    isCancelled = true;
    WaitingRng::Cancel();
  }

 private:
  std::atomic<bool> isCancelled = false;
};

}  // namespace

EXPORT_RNG(WaitsOnlyOnceRng)
