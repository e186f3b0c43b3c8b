// Shows a variable of an inline function, which the process has only once.

#include "tests/fake_plugins/correct_rng.h"

__attribute__((visibility("default"))) inline int& Uses() {
  static int uses;
  return uses;
}

namespace {

class HasUniqueSymbolRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return ++Uses() != 0; }
};

}  // namespace

EXPORT_RNG(HasUniqueSymbolRng)
