// Has other capabilities in one call, the one with the number CHANGED_CALL.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class FlagsChangeRng final : public CorrectRng {
 public:
  std::uint32_t GetFlags() override {
    return ++calls == CHANGED_CALL ? kRngCapabilityPrerecorded : kRngCapabilityHardware;
  }

 private:
  int calls = 0;
};

}  // namespace

EXPORT_RNG(FlagsChangeRng)
