// IsAvailable prints a coloured line on standard error. SelfTest prints many different lines.

#include "tests/fake_plugins/correct_rng.h"

#include <cstdio>

namespace {

class PrintsLinesRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    std::fputs("looking for \033[1mdevices\n", stderr);
    return true;
  }
  bool SelfTest() override {
    for (int i = 0; i < 200; ++i) std::fprintf(stderr, "test %d\n", i);
    return true;
  }
};

}  // namespace

EXPORT_RNG(PrintsLinesRng)
