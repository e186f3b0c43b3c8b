// Breaks nothing; its draws take long, and one after the other: what came first is the last.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <mutex>
#include <unistd.h>

namespace {

class DrawsInTurnRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    if (!isEntered.exchange(true)) ::usleep(50000);
    const std::lock_guard guard(lock);
    ::usleep(600000);
    return CorrectRng::Generate(buffer, size);
  }

 private:
  std::atomic<bool> isEntered = false;
  std::mutex lock;
};

}  // namespace

EXPORT_RNG(DrawsInTurnRng)
