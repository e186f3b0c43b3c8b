// A plug-in with one device, "X1", whose draws fail.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class FailingDeviceRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char* buffer) override { return Report("A broken device", buffer); }
  bool SelectDevice(const char* hardwareId) override {
    return CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, "X1") == 0;
  }
  bool Generate(void* buffer, std::size_t size) override {
    std::memset(buffer, 0, size);
    return false;
  }
  std::uint32_t GetFlags() override { return kRngCapabilityHardware | 0x80000000; }
};

}  // namespace

EXPORT_RNG(FailingDeviceRng)
