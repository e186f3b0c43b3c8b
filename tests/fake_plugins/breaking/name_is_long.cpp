// Has a name of 18 characters.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameIsLongRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override { return Report("eighteen-character", buffer); }
};

}  // namespace

EXPORT_RNG(NameIsLongRng)
