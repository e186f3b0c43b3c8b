// Writes one byte before its name.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameUnderrunsRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    if (buffer) buffer[-1] = 'x';
    return Report(KIND, buffer);
  }
};

}  // namespace

EXPORT_RNG(NameUnderrunsRng)
