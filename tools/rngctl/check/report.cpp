#include "tools/rngctl/check/report.h"

#include <algorithm>

std::size_t CheckReport::Count(Outcome outcome) const {
  return static_cast<std::size_t>(
      std::count_if(checks.begin(), checks.end(),
                    [outcome](const CheckResult& check) { return check.outcome == outcome; }));
}

std::size_t CheckReport::CountFailed(Severity severity) const {
  return static_cast<std::size_t>(
      std::count_if(checks.begin(), checks.end(), [severity](const CheckResult& check) {
        return check.outcome == Outcome::kFailed && check.severity == severity;
      }));
}
