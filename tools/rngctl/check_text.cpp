#include "check_report.h"
#include "host.h"
#include "terminal.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

namespace {

constexpr int kStatusWidth = 14;

struct Status {
  const char* word;
  const char* colour;
};

Status StatusOf(const CheckResult& check) {
  if (check.finding.outcome == Outcome::kPassed) return {"passed", "\033[32m"};
  if (check.finding.outcome == Outcome::kNotExamined) return {"not examined", "\033[2m"};
  if (check.severity == Severity::kNote) return {"note", "\033[36m"};
  return check.severity == Severity::kError ? Status{"failed", "\033[31m"}
                                            : Status{"warning", "\033[33m"};
}

void PrintDetail(const std::string& label, const std::string& text) {
  std::cout << std::setw(kStatusWidth) << "" << label << ": " << Printable(text) << '\n';
}

void PrintCheck(const CheckResult& check, int nameWidth, bool isColoured) {
  const Status status = StatusOf(check);
  std::cout << (isColoured ? status.colour : "") << std::setw(kStatusWidth) << status.word
            << (isColoured ? "\033[0m" : "") << std::setw(nameWidth) << check.name << check.rule
            << '\n';
  if (check.finding.outcome == Outcome::kNotExamined) PrintDetail("why", check.finding.seen);
  if (check.finding.outcome == Outcome::kFailed) {
    PrintDetail("seen", check.finding.seen);
    PrintDetail("mend", check.mend);
  }
}

std::string Counted(std::size_t count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

}  // namespace

void PrintAsText(const CheckReport& report) {
  std::size_t width = 0;
  for (const CheckResult& check : report.checks) width = std::max(width, check.name.size());
  std::cout << std::left;
  for (const CheckResult& check : report.checks) {
    PrintCheck(check, static_cast<int>(width) + 2, UsesColour());
  }
  std::cout << '\n'
            << Counted(report.Count(Outcome::kPassed), "check") << " passed, "
            << report.CountFailed(Severity::kError) << " failed, "
            << Counted(report.CountFailed(Severity::kWarning), "warning");
  const std::size_t notes = report.CountFailed(Severity::kNote);
  const std::size_t notExamined = report.Count(Outcome::kNotExamined);
  if (notes != 0) std::cout << ", " << Counted(notes, "note");
  if (notExamined != 0) std::cout << ", " << notExamined << " not examined";
  std::cout << '\n';
}
