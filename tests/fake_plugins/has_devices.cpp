// Has two devices, "A1" and "B2", and refuses every other.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class DeviceRng final : public CorrectRng {
 public:
  bool SelectDevice(const char* hardwareId) override {
    return CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, "A1") == 0 ||
           std::strcmp(hardwareId, "B2") == 0;
  }
};

}  // namespace

EXPORT_RNG(DeviceRng)
