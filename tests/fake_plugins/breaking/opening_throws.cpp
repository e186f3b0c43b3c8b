// Its static constructor throws.

#include "tests/fake_plugins/correct_rng.h"

#include <stdexcept>

namespace {

class OpeningThrowsRng final : public CorrectRng {
 public:
  OpeningThrowsRng() { throw std::runtime_error("no device"); }
};

}  // namespace

EXPORT_RNG(OpeningThrowsRng)
