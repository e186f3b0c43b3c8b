// Reports more devices in the second call than it announced in the first, without writing them.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class ReportSizeDiffersRng final : public CorrectRng {};

}  // namespace

EXPORT_RNG(ReportSizeDiffersRng)

std::int32_t GetRngReport(char* buffer) { return buffer ? 20 : 10; }
