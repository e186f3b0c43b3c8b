// A plug-in that does what the test case says (`Fake`) and logs every call.

#include "tests/support/fakes.h"

#include <cstring>

namespace {

void Log(const char* what) { RecordCall(KIND, what); }

class ScriptedRng final : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override {
    Log("GetName");
    const FakeRng& fake = Fake(KIND);
    const auto need = static_cast<std::int32_t>(fake.name.size() + 1);
    const std::int32_t size = fake.nameSize.value_or(need);
    if (!buffer) return size;
    std::memcpy(buffer, fake.name.c_str(), fake.name.size() + fake.isTerminated);
    return fake.nameAgain.value_or(size);
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
    return Fake(KIND).isAvailable;
  }
  bool SelfTest() override { return true; }
  void Cancel() override { Log("Cancel"); }
  std::uint32_t GetFlags() override {
    Log("GetFlags");
    return Fake(KIND).flags;
  }
  void SetSettings(IRngSettings* settings) override {
    Fake(KIND).settings = settings;
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
  FakeRng& fake = Fake(KIND);
  fake.provider = fake.factoryGivesNull ? nullptr : &g_provider;
  return fake.provider;
}
