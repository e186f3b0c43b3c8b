// Draws the same bytes in each process, though not after a second start in the same one.

#include "tests/fake_plugins/correct_rng.h"

#include <mutex>
#include <random>

namespace {

class RepeatsInEachProcessRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (!isFirstStart) return CorrectRng::Generate(buffer, size);
    const std::lock_guard guard(lock);
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(engine() >> 7);
    return true;
  }

 private:
  const bool isFirstStart = IsFirstTime();
  std::mutex lock;
  std::mt19937 engine;
};

}  // namespace

EXPORT_RNG(RepeatsInEachProcessRng)
