// Has other capabilities at every call.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class FlagsChangeRng final : public CorrectRng {
 public:
  std::uint32_t GetFlags() override { return ++flags; }

 private:
  std::uint32_t flags = 0;
};

}  // namespace

EXPORT_RNG(FlagsChangeRng)
