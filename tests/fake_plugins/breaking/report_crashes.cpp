// Crashes when it is asked for its devices.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class ReportCrashesRng final : public CorrectRng {};

}  // namespace

EXPORT_RNG(ReportCrashesRng)

std::int32_t GetRngReport(char*) { std::abort(); }
