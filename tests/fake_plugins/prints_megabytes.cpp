// Fills every pipe that is not drained.

#include "tests/fake_plugins/correct_rng.h"

#include <cstdio>

namespace {

class PrintsMegabytesRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    for (int i = 0; i < 40000; ++i)
      std::puts("A line of fifty characters, more or less, is printed.");
    return true;
  }
};

}  // namespace

EXPORT_RNG(PrintsMegabytesRng)
