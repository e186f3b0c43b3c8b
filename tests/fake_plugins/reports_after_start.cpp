// Reports its device only if it has settings and was asked whether it is available.

#include "tests/fake_plugins/correct_rng.h"

namespace {

bool g_hasSettings = false;
bool g_wasAsked = false;

class ReportsAfterStartRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings* settings) override { g_hasSettings = settings != nullptr; }
  bool IsAvailable() override {
    g_wasAsked = g_hasSettings;
    return true;
  }
};

}  // namespace

EXPORT_RNG(ReportsAfterStartRng)

std::int32_t GetRngReport(char* buffer) {
  constexpr char kReport[] = "device\tR1\tReader 1\n";
  if (!g_wasAsked) return 0;
  if (buffer) std::memcpy(buffer, kReport, sizeof kReport);
  return static_cast<std::int32_t>(sizeof kReport);
}
