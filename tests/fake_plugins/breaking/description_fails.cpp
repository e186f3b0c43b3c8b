// Answers with an error number instead of a size.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class DescriptionFailsRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char*) override { return -1; }
};

}  // namespace

EXPORT_RNG(DescriptionFailsRng)
