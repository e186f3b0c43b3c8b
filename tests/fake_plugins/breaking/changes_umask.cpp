// Changes the umask in the operation that the macro WHERE names.

#include "tests/fake_plugins/correct_rng.h"

#include <sys/stat.h>

namespace {

enum Operation { kName, kDescription, kHardwareId, kFlags, kSelectDevice, kSelfTest, kCancel };

class ChangesUmaskRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    Begin(kName);
    return CorrectRng::GetName(buffer);
  }
  std::int32_t GetDescription(char* buffer) override {
    Begin(kDescription);
    return CorrectRng::GetDescription(buffer);
  }
  std::int32_t GetHardwareId(char*) override {
    Begin(kHardwareId);
    return 0;
  }
  std::uint32_t GetFlags() override {
    Begin(kFlags);
    return CorrectRng::GetFlags();
  }
  bool SelectDevice(const char* hardwareId) override {
    Begin(kSelectDevice);
    return CorrectRng::SelectDevice(hardwareId);
  }
  bool SelfTest() override {
    Begin(kSelfTest);
    return true;
  }
  void Cancel() override { Begin(kCancel); }

 private:
  static void Begin(Operation operation) {
    if (operation == WHERE) ::umask(0777);
  }
};

}  // namespace

EXPORT_RNG(ChangesUmaskRng)
