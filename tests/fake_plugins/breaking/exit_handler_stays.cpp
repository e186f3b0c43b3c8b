// Leaves a handler to the end of the process.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class ExitHandlerStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    if (IsFirstTime()) ::on_exit(SayGoodbye, nullptr);
    return true;
  }

 private:
  static void SayGoodbye(int, void*) {}
};

}  // namespace

EXPORT_RNG(ExitHandlerStaysRng)
