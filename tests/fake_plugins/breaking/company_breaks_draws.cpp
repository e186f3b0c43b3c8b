// After two threads have drawn at the same time, all draws fail.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <unistd.h>

namespace {

class CompanyBreaksDrawsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    if (++drawing > 1) isBroken = true;
    ::usleep(100);
    --drawing;
    if (!isBroken) return CorrectRng::Generate(buffer, size);
    std::memset(buffer, 0, size);
    return false;
  }

 private:
  std::atomic<int> drawing = 0;
  std::atomic<bool> isBroken = false;
};

}  // namespace

EXPORT_RNG(CompanyBreaksDrawsRng)
