// Breaks nothing; its draws of a kilobyte take their time, and so does what the library calls when it
// is used again.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class SlowThroughoutRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size > 1000 && size < 4000) ::usleep(100000);
    return CorrectRng::Generate(buffer, size);
  }
  bool IsAvailable() override {
    if (isUsedAgain) ::usleep(600000);
    return true;
  }
  void Release() override {
    if (isUsedAgain) ::usleep(600000);
  }

 private:
  const bool isUsedAgain = !IsFirstTime();
};

}  // namespace

EXPORT_RNG(SlowThroughoutRng)
