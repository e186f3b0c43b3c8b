// Loses a block in one use of twelve, which is too little to be taken for a leak.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class LeaksSeldomRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    if (std::rand() % 12 == 0) block = std::malloc(24);
    return true;
  }

 private:
  void* volatile block = nullptr;
};

}  // namespace

EXPORT_RNG(LeaksSeldomRng)
