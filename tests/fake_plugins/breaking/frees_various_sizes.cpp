// Fails no check. In one use of fifty, on average, it frees a block of a random size, so the thread's cache of free
// blocks fills slowly.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class FreesVariousSizesRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    if (std::rand() % 50 == 0) {
      // calloc takes no block from the cache.
      void* const volatile block =
          std::calloc(1, 24 + 16 * static_cast<std::size_t>(std::rand() % 64));
      std::free(block);
    }
    return true;
  }
};

}  // namespace

EXPORT_RNG(FreesVariousSizesRng)
