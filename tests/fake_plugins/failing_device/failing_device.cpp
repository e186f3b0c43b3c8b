// A plug-in with one device, "X1", whose draws fail.

#include <cstring>

#include <rngaggregator/provider.h>

namespace {

std::int32_t Report(const char* text, char* buffer) {
  if (buffer) std::strcpy(buffer, text);
  return static_cast<std::int32_t>(std::strlen(text) + 1);
}

class FailingDeviceRng final : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override { return Report(KIND, buffer); }
  std::int32_t GetDescription(char* buffer) override { return Report("A broken device", buffer); }
  std::int32_t GetHardwareId(char* buffer) override { return Report("X1", buffer); }
  bool SelectDevice(const char* hardwareId) override {
    return !hardwareId || std::strcmp(hardwareId, "X1") == 0;
  }
  bool Generate(void* buffer, std::size_t size) override {
    std::memset(buffer, 0, size);
    return false;
  }
  bool IsAvailable() override { return true; }
  bool SelfTest() override { return false; }
  void Cancel() override {}
  std::uint32_t GetFlags() override { return kRngCapabilityHardware | 0x80000000; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}
} g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }
