// Has a few bytes in store. Later draws never return, and Cancel does not end them.

#include "tests/fake_plugins/waiting_rng.h"

#include <atomic>

namespace {

class LaterDrawWaitsRng final : public WaitingRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0 || drawn++ < 5) return CorrectRng::Generate(buffer, size);
    return WaitingRng::Generate(buffer, size);
  }
  void Cancel() override {}

 private:
  std::atomic<int> drawn = 0;
};

}  // namespace

EXPORT_RNG(LaterDrawWaitsRng)
