// Breaks nothing; it has so many bytes and no more.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>

namespace {

class RunsOutRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    left -= static_cast<long>(size);
    if (left > 0) return CorrectRng::Generate(buffer, size);
    if (size != 0) std::memset(buffer, 0, size);
    return size == 0;
  }

 private:
  std::atomic<long> left = 1000;
};

}  // namespace

EXPORT_RNG(RunsOutRng)
