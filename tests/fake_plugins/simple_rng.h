#ifndef TESTS_FAKE_PLUGINS_SIMPLE_RNG_H
#define TESTS_FAKE_PLUGINS_SIMPLE_RNG_H

#include <cstring>

#include <rngaggregator/provider.h>

/// A provider without a fault, for fake plug-ins that override the one operation that has it. Its
/// kind is the macro KIND.
class SimpleRng : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override { return Report(KIND, buffer); }
  std::int32_t GetDescription(char* buffer) override { return Report("A simple source", buffer); }
  std::int32_t GetHardwareId(char*) override { return 0; }
  bool SelectDevice(const char* hardwareId) override { return !hardwareId || !*hardwareId; }
  bool Generate(void* buffer, std::size_t size) override {
    std::memset(buffer, 0xA5, size);
    return true;
  }
  bool IsAvailable() override { return true; }
  bool SelfTest() override { return true; }
  void Cancel() override {}
  std::uint32_t GetFlags() override { return kRngCapabilityHardware; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}

 protected:
  static std::int32_t Report(const char* text, char* buffer) {
    const std::size_t size = std::strlen(text) + 1;
    if (buffer) std::memcpy(buffer, text, size);
    return static_cast<std::int32_t>(size);
  }
};

#endif
