// Its draws are slow but wait for nothing but each other. Cancel waits until all draws have ended.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <mutex>
#include <unistd.h>

namespace {

class SlowCancelWaitsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    ++draws;
    const bool isDrawn = DrawSlowly(buffer, size);
    --draws;
    return isDrawn;
  }

  // A mutex would not do: it may be free for a moment between two draws.
  void Cancel() override {
    while (draws != 0) ::usleep(1000);
  }

 private:
  bool DrawSlowly(void* buffer, std::size_t size) {
    const std::lock_guard guard(lock);
    ::usleep(300000);
    return CorrectRng::Generate(buffer, size);
  }

  std::mutex lock;
  std::atomic<int> draws{0};
};

}  // namespace

EXPORT_RNG(SlowCancelWaitsRng)
