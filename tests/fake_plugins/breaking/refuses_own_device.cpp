// Names its device, and does not know it by that.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class RefusesOwnDeviceRng final : public CorrectRng {
 public:
  std::int32_t GetHardwareId(char* buffer) override { return Report("X1", buffer); }
};

}  // namespace

EXPORT_RNG(RefusesOwnDeviceRng)
