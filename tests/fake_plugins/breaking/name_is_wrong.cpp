// Reports a name of its own.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameIsWrongRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override { return Report("mine", buffer); }
};

}  // namespace

EXPORT_RNG(NameIsWrongRng)
