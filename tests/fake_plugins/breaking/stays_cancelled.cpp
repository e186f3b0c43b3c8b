// After a Cancel no draw succeeds any more.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class StaysCancelledRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (!isCancelled || size == 0) return CorrectRng::Generate(buffer, size);
    std::memset(buffer, 0, size);
    return false;
  }
  void Cancel() override { isCancelled = true; }

 private:
  bool isCancelled = false;
};

}  // namespace

EXPORT_RNG(StaysCancelledRng)
