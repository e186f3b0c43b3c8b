// Leaves its handler of the C++ runtime, which SET registers.

#include "tests/fake_plugins/correct_rng.h"

#include <exception>
#include <new>

namespace {

class CppHandlerStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    SET([] { std::abort(); });
    return true;
  }
};

}  // namespace

EXPORT_RNG(CppHandlerStaysRng)
