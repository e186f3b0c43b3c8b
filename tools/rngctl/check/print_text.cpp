#include "tools/rngctl/check/report.h"
#include "tools/rngctl/terminal/colour.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <iostream>

namespace {

constexpr std::size_t kStatusWidth = 14;

struct Status {
  const char* word;
  Colour colour;
};

Status StatusOf(const CheckResult& check) {
  if (check.outcome == Outcome::kPassed) return {"passed", Colour::kGreen};
  if (check.severity == Severity::kNote) return {"note", Colour::kCyan};
  return check.severity == Severity::kError ? Status{"failed", Colour::kRed}
                                            : Status{"warning", Colour::kYellow};
}

void PrintDetail(const std::string& label, const std::string& text) {
  std::cout << Padded("", kStatusWidth) << label << ": " << Printable(text) << '\n';
}

void PrintStatus(const Status& status) {
  std::cout << Coloured(Padded(status.word, kStatusWidth), status.colour);
}

void PrintCheck(const CheckResult& check, std::size_t nameWidth) {
  PrintStatus(StatusOf(check));
  std::cout << Padded(check.name, nameWidth) << check.sentence << '\n';
  if (check.outcome == Outcome::kFailed) {
    PrintDetail("found", check.found);
    PrintDetail("fix", check.fix);
  }
}

struct Unexamined {
  std::string reason;
  std::string names;
};

// Many checks are often not examined for the same reason. It is printed once.
void Add(const CheckResult& check, std::vector<Unexamined>& all) {
  const auto same = std::find_if(all.begin(), all.end(), [&check](const Unexamined& other) {
    return other.reason == check.found;
  });
  if (same == all.end()) {
    all.push_back({check.found, check.name});
  } else {
    same->names += ", " + check.name;
  }
}

void PrintUnexamined(const std::vector<CheckResult>& checks) {
  std::vector<Unexamined> all;
  for (const CheckResult& check : checks) {
    if (check.outcome == Outcome::kNotExamined) Add(check, all);
  }
  for (const Unexamined& unexamined : all) {
    PrintStatus({"not examined", Colour::kDim});
    std::cout << unexamined.names << '\n';
    PrintDetail("why", unexamined.reason);
  }
}

// The first few: a line may be printed in all of them.
std::string Listed(const std::vector<std::string>& checks) {
  constexpr std::size_t kShown = 3;
  std::string names;
  for (std::size_t i = 0; i < std::min(checks.size(), kShown); ++i) {
    names += (i == 0 ? "" : ", ") + checks[i];
  }
  if (checks.size() <= kShown) return names;
  return names + " and " + Counted(checks.size() - kShown, "more check");
}

void PrintLine(const CheckOutput& output) {
  PrintStatus({"printed", Colour::kDim});
  std::cout << Printable(Quoted(output.line)) << '\n';
  PrintDetail("where", std::string(output.isError ? "standard error" : "standard output") + ", " +
                           Counted(output.count, "time") + ", in " + Listed(output.checks));
}

void PrintOutput(const CheckReport& report) {
  constexpr std::size_t kShown = 20;  // the JSON has more
  std::size_t omitted = report.omittedLines;
  for (std::size_t i = 0; i < report.output.size(); ++i) {
    if (i < kShown) {
      PrintLine(report.output[i]);
    } else {
      omitted += report.output[i].count;
    }
  }
  if (omitted == 0) return;
  PrintStatus({"printed", Colour::kDim});
  std::cout << Counted(omitted, "more line") << '\n';
}

}  // namespace

void PrintText(const CheckReport& report) {
  std::size_t width = 0;
  for (const CheckResult& check : report.checks) width = std::max(width, check.name.size());
  for (const CheckResult& check : report.checks) {
    if (check.outcome == Outcome::kNotExamined) continue;
    PrintCheck(check, width + 2);
  }
  PrintUnexamined(report.checks);
  PrintOutput(report);
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
