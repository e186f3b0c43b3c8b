// Forgets a block of memory each time.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class LeaksMemoryRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    forgotten = std::malloc(1);
    return forgotten != nullptr;
  }

 private:
  void* volatile forgotten = nullptr;  // else a compiler leaves the allocation out
};

}  // namespace

EXPORT_RNG(LeaksMemoryRng)
