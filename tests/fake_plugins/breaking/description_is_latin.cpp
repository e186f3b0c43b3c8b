// Describes itself in another encoding than UTF-8.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class DescriptionIsLatinRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char* buffer) override { return Report("g\xE9n\xE9rateur", buffer); }
};

}  // namespace

EXPORT_RNG(DescriptionIsLatinRng)
