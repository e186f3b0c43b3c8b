// Counts the terminator of its identifier only for the caller who wants the size.

#include "tests/fake_plugins/correct_rng.h"

#include <cstring>

namespace {

constexpr char kId[] = "X1";

class HardwareIdSizeDiffersRng final : public CorrectRng {
 public:
  std::int32_t GetHardwareId(char* buffer) override {
    return Report(kId, buffer) - (buffer ? 1 : 0);
  }
  bool SelectDevice(const char* hardwareId) override {
    return CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, kId) == 0;
  }
};

}  // namespace

EXPORT_RNG(HardwareIdSizeDiffersRng)
