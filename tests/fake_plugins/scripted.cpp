// A plug-in that does what the test case says (`Fake`) and logs every call.

#include "tests/support/fake_answers.h"

#include <cstring>

#include <rngaggregator/provider.h>

namespace {

void Log(const char* what) { RecordCallFromC(KIND, what); }

class ScriptedRng final : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override {
    Log("GetName");
    const FakeName name = NameOfFake(KIND);
    if (!buffer) return name.size;
    std::memcpy(buffer, name.text, name.written);
    return name.sizeAgain;
  }
  std::int32_t GetDescription(char*) override { return 0; }
  std::int32_t GetHardwareId(char*) override { return 0; }
  bool SelectDevice(const char*) override { return true; }
  bool Generate(void* buffer, std::size_t size) override {
    std::memset(buffer, 0xA5, size);
    return true;
  }
  bool IsAvailable() override {
    Log("IsAvailable");
    return IsFakeAvailable(KIND);
  }
  bool SelfTest() override { return true; }
  void Cancel() override { Log("Cancel"); }
  std::uint32_t GetFlags() override {
    Log("GetFlags");
    return FlagsOfFake(KIND);
  }
  void SetSettings(IRngSettings* settings) override {
    KeepSettings(KIND, settings);
    Log("SetSettings");
  }
  void Release() override { Log("Release"); }
};

struct Presence {
  Presence() { Log("opened"); }
  ~Presence() { Log("closed"); }
};

ScriptedRng g_provider;
Presence g_presence;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  Log("factory");
  return GiveProvider(KIND, &g_provider);
}
