#include "tools/rngctl/check/report.h"

#include <algorithm>

void CheckReport::AddOutput(const std::string& check, bool isError, const PrintedLines& printed) {
  constexpr std::size_t kMostLines = 100;
  omittedLines += printed.CountOmitted();
  for (const PrintedLine& line : printed.Lines()) {
    const auto same = std::find_if(output.begin(), output.end(), [&](const CheckOutput& other) {
      return other.isError == isError && other.line == line.text;
    });
    if (same != output.end()) {
      same->count += line.count;
      if (same->checks.back() != check) same->checks.push_back(check);
    } else if (output.size() < kMostLines) {
      output.push_back({isError, line.text, line.count, {check}});
    } else {
      omittedLines += line.count;
    }
  }
}

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
