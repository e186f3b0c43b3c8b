// Loses its device when SelectDevice is called with an unknown one.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class ForgetsItsDeviceRng final : public CorrectRng {
 public:
  std::int32_t GetHardwareId(char* buffer) override { return hasDevice ? Report("X1", buffer) : 0; }
  bool SelectDevice(const char* hardwareId) override {
    hasDevice = CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, "X1") == 0;
    return hasDevice;
  }

 private:
  bool hasDevice = true;
};

}  // namespace

EXPORT_RNG(ForgetsItsDeviceRng)
