// Reports one device, in a report of SIZE bytes with the terminator. BEFORE_WRITING is done in the second call.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class ReportsBytesRng final : public CorrectRng {
 public:
  bool SelectDevice(const char* hardwareId) override {
    return CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, "R1") == 0;
  }
};

}  // namespace

EXPORT_RNG(ReportsBytesRng)

std::int32_t GetRngReport(char* buffer) {
  constexpr char kBegin[] = "device\tR1\t";
  if (!buffer) return SIZE;
  BEFORE_WRITING;
  std::memset(buffer, 'x', SIZE - 1);
  std::memcpy(buffer, kBegin, sizeof kBegin - 1);
  buffer[SIZE - 1] = '\0';
  return SIZE;
}
