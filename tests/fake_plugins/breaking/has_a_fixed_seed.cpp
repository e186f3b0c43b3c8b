// Draws the same sequence at every start.

#include "tests/fake_plugins/correct_rng.h"

#include <mutex>
#include <random>

namespace {

class HasAFixedSeedRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    const std::lock_guard guard(lock);
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(engine() >> 7);
    return true;
  }

 private:
  std::mutex lock;
  std::mt19937 engine;
};

}  // namespace

EXPORT_RNG(HasAFixedSeedRng)
