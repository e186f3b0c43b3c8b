// Ends the process when asked for its name.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NameEndsProcessRng final : public CorrectRng {
 public:
  std::int32_t GetName(char*) override { std::exit(3); }
};

}  // namespace

EXPORT_RNG(NameEndsProcessRng)
