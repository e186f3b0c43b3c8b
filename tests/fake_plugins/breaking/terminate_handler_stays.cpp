// Leaves its handler to the end by an exception.

#include "tests/fake_plugins/correct_rng.h"

#include <exception>

namespace {

class TerminateHandlerStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    std::set_terminate([] { std::abort(); });
    return true;
  }
};

}  // namespace

EXPORT_RNG(TerminateHandlerStaysRng)
