// Reports a device. When that is selected, it reports another spelling, which it does not accept.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class RenamesOwnDeviceRng final : public CorrectRng {
 public:
  std::int32_t GetHardwareId(char* buffer) override {
    return isSelected ? Report("r1", buffer) : CorrectRng::GetHardwareId(buffer);
  }
  bool SelectDevice(const char* hardwareId) override {
    if (CorrectRng::SelectDevice(hardwareId)) return true;
    if (std::strcmp(hardwareId, "R1") != 0) return false;
    isSelected = true;
    return true;
  }

 private:
  bool isSelected = false;
};

}  // namespace

EXPORT_RNG(RenamesOwnDeviceRng)

std::int32_t GetRngReport(char* buffer) {
  constexpr char kReport[] = "device\tR1\tReader 1\n";
  if (buffer) std::memcpy(buffer, kReport, sizeof kReport);
  return static_cast<std::int32_t>(sizeof kReport);
}
