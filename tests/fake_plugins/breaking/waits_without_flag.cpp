// Waits for a user, but its flags do not say so.

#include "tests/fake_plugins/waiting_rng.h"

namespace {

class WaitsWithoutFlagRng final : public WaitingRng {
 public:
  std::uint32_t GetFlags() override { return kRngCapabilityHardware; }
};

}  // namespace

EXPORT_RNG(WaitsWithoutFlagRng)
