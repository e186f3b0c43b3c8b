// Reports the text REPORT. DEVICE is the one device that it accepts; AVAILABLE is what IsAvailable returns.
// With NAMELESS, it has no name.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class ReportsDevicesRng final : public CorrectRng {
 public:
  bool SelectDevice(const char* hardwareId) override {
    return CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, DEVICE) == 0;
  }
  bool IsAvailable() override { return AVAILABLE; }
#ifdef NAMELESS
  std::int32_t GetName(char*) override { return 0; }
#endif
};

}  // namespace

EXPORT_RNG(ReportsDevicesRng)

std::int32_t GetRngReport(char* buffer) {
  if (buffer) std::memcpy(buffer, REPORT, sizeof REPORT);
  return static_cast<std::int32_t>(sizeof REPORT);
}
