// Calls a function of a library that rngctl is linked with, and it itself is not.

#include "tests/fake_plugins/correct_rng.h"

extern "C" unsigned elf_version(unsigned version);

namespace {

class BorrowsAFunctionRng final : public CorrectRng {
 public:
  bool SelfTest() override { return elf_version(1) == 1; }
};

}  // namespace

EXPORT_RNG(BorrowsAFunctionRng)
