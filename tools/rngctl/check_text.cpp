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
  if (check.severity == Severity::kNote) return {"note", "\033[36m"};
  return check.severity == Severity::kError ? Status{"failed", "\033[31m"}
                                            : Status{"warning", "\033[33m"};
}

void PrintDetail(const std::string& label, const std::string& text) {
  std::cout << std::setw(kStatusWidth) << "" << label << ": " << Printable(text) << '\n';
}

void PrintStatus(const Status& status) {
  const bool isColoured = UsesColour();
  std::cout << (isColoured ? status.colour : "") << std::setw(kStatusWidth) << status.word
            << (isColoured ? "\033[0m" : "");
}

void PrintCheck(const CheckResult& check, int nameWidth) {
  PrintStatus(StatusOf(check));
  std::cout << std::setw(nameWidth) << check.name << check.rule << '\n';
  if (check.finding.outcome == Outcome::kFailed) {
    PrintDetail("seen", check.finding.seen);
    PrintDetail("mend", check.mend);
  }
}

struct Unexamined {
  std::string reason;
  std::string names;
};

// One reason often keeps many checks from being made: it is said once.
void Add(const CheckResult& check, std::vector<Unexamined>& all) {
  const auto same = std::find_if(all.begin(), all.end(), [&check](const Unexamined& other) {
    return other.reason == check.finding.seen;
  });
  if (same == all.end()) {
    all.push_back({check.finding.seen, check.name});
  } else {
    same->names += ", " + check.name;
  }
}

void PrintUnexamined(const std::vector<CheckResult>& checks) {
  std::vector<Unexamined> all;
  for (const CheckResult& check : checks) {
    if (check.finding.outcome == Outcome::kNotExamined) Add(check, all);
  }
  for (const Unexamined& unexamined : all) {
    PrintStatus({"not examined", "\033[2m"});
    std::cout << unexamined.names << '\n';
    PrintDetail("why", unexamined.reason);
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
    if (check.finding.outcome == Outcome::kNotExamined) continue;
    PrintCheck(check, static_cast<int>(width) + 2);
  }
  PrintUnexamined(report.checks);
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
