// Forgets a copy of its description each time.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class LeaksInTextsRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char* buffer) override {
    forgotten = std::malloc(100);
    return CorrectRng::GetDescription(buffer);
  }

 private:
  void* volatile forgotten = nullptr;  // else a compiler leaves the allocation out
};

}  // namespace

EXPORT_RNG(LeaksInTextsRng)
