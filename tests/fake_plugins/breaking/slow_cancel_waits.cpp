// Its draws are slow but wait for nothing. Cancel waits until a draw has ended.

#include "tests/fake_plugins/correct_rng.h"

#include <mutex>
#include <unistd.h>

namespace {

class SlowCancelWaitsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    const std::lock_guard guard(lock);
    ::usleep(300000);
    return CorrectRng::Generate(buffer, size);
  }
  void Cancel() override { const std::lock_guard guard(lock); }

 private:
  std::mutex lock;
};

}  // namespace

EXPORT_RNG(SlowCancelWaitsRng)
