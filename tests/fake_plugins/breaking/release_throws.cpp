// Throws when it is released.

#include "tests/fake_plugins/correct_rng.h"

#include <stdexcept>

namespace {

class ReleaseThrowsRng final : public CorrectRng {
 public:
  void Release() override { throw std::logic_error("still in use"); }
};

}  // namespace

EXPORT_RNG(ReleaseThrowsRng)
