// Writes one byte before its name. A tool may have filled the memory there with the same byte.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameUnderrunsRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    if (buffer) buffer[-1] = '\x3C';
    return Report(KIND, buffer);
  }
};

}  // namespace

EXPORT_RNG(NameUnderrunsRng)
