// Stops its process when it is asked whether it is available.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>

namespace {

class StopsItselfRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    std::raise(SIGSTOP);
    return true;
  }
};

}  // namespace

EXPORT_RNG(StopsItselfRng)
