// After a second start in the same process, its draws fail.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class SecondStartBreaksDrawsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (isFirst || size == 0) return CorrectRng::Generate(buffer, size);
    std::memset(buffer, 0, size);
    return false;
  }

 private:
  const bool isFirst = IsFirstTime();
};

}  // namespace

EXPORT_RNG(SecondStartBreaksDrawsRng)
