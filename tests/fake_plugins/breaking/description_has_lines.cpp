// Describes itself at length.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class DescriptionHasLinesRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char* buffer) override { return Report("One\ntwo", buffer); }
};

}  // namespace

EXPORT_RNG(DescriptionHasLinesRng)
