// Writes one byte more than it asked for.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameOverrunsRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    const std::int32_t size = Report(KIND, buffer);
    if (buffer) buffer[size] = 'x';
    return size;
  }
};

}  // namespace

EXPORT_RNG(NameOverrunsRng)
