// Has no name.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameIsEmptyRng final : public CorrectRng {
 public:
  std::int32_t GetName(char*) override { return 0; }
};

}  // namespace

EXPORT_RNG(NameIsEmptyRng)
