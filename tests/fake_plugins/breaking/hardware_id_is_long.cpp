// Has a device with an identifier of 18 characters.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class HardwareIdIsLongRng final : public CorrectRng {
 public:
  std::int32_t GetHardwareId(char* buffer) override { return Report("eighteen-character", buffer); }
};

}  // namespace

EXPORT_RNG(HardwareIdIsLongRng)
