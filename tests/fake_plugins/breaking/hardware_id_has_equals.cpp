// Has a device whose IDENTIFIER, a macro, the settings file cannot hold.

#include "tests/fake_plugins/correct_rng.h"

namespace {

constexpr char kId[] = IDENTIFIER;

class EqualsRng final : public CorrectRng {
 public:
  std::int32_t GetHardwareId(char* buffer) override { return Report(kId, buffer); }
  bool SelectDevice(const char* hardwareId) override {
    return CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, kId) == 0;
  }
};

}  // namespace

EXPORT_RNG(EqualsRng)
