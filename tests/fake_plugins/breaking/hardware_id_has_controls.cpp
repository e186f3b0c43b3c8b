// Clears the terminal that shows the identifier of its device.

#include "tests/fake_plugins/correct_rng.h"

namespace {

constexpr char kId[] = "X1\033[2J";

class ControlsRng final : public CorrectRng {
 public:
  std::int32_t GetHardwareId(char* buffer) override { return Report(kId, buffer); }
  bool SelectDevice(const char* hardwareId) override {
    return CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, kId) == 0;
  }
};

}  // namespace

EXPORT_RNG(ControlsRng)
