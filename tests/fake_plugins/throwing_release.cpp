// A plug-in whose Release throws what is no standard exception.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class ThrowingReleaseRng final : public CorrectRng {
 public:
  void Release() override { throw 1; }
};

}  // namespace

EXPORT_RNG(ThrowingReleaseRng)
