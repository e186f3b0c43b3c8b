// Breaks nothing; every seventh draw takes long, but waits for nothing.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <unistd.h>

namespace {

class SometimesSlowRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size != 0 && ++draws % 7 == 0) ::usleep(400000);
    return CorrectRng::Generate(buffer, size);
  }

 private:
  std::atomic<int> draws = 0;
};

}  // namespace

EXPORT_RNG(SometimesSlowRng)
