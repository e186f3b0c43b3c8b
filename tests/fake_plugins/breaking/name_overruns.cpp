// Writes one byte more than it asked for. A tool may have filled the memory there with the same byte.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameOverrunsRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    const std::int32_t size = Report(KIND, buffer);
    if (buffer) buffer[size] = '\xC3';
    return size;
  }
};

}  // namespace

EXPORT_RNG(NameOverrunsRng)
