// On standard error, IsAvailable prints a coloured line, SelfTest many different lines, and a draw of nothing one more.

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
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) std::fputs("drawing nothing\n", stderr);
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(PrintsLinesRng)
