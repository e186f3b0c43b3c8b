// Counts the terminator only for the caller who wants the size.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameSizeDiffersRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override { return Report(KIND, buffer) - (buffer ? 1 : 0); }
};

}  // namespace

EXPORT_RNG(NameSizeDiffersRng)
