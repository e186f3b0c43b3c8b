#include "tools/rngctl/doctor/start_verdict.h"

#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/refusal.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

std::string DuringStep(StartStep step) {
  switch (step) {
    case StartStep::kStart:
      return " during the start";
    case StartStep::kDefault:
      return " during the search for the default";
    case StartStep::kStop:
      return " during the stop";
    default:
      return " while the process exited";
  }
}

}  // namespace

void CompareWithStart(GeneratorReport& row, const ChildResult& start) {
  const auto answer = start.Last<StartAnswer>();
  if (!answer || answer->step == StartStep::kStart) return;  // the start did not get far enough
  std::string opened;
  for (const fs::path path : answer->opened) {
    if (path.filename() == row.libraryFile) opened = path;
  }
  const bool isKept = !opened.empty() && (row.isKept || !row.staysLoaded);
  std::error_code unknown;
  if (row.verdict == DoctorVerdict::kInternalError) {
    row.isKept = isKept;  // only the start shows it
  } else if (isKept != row.isKept) {
    row.isKept = isKept;
    Put(row, DoctorVerdict::kContradicted,
        row.summary + ", but a start with all plug-ins " +
            (isKept ? "keeps " + opened : "does not keep it"),
        "The real start is authoritative. Check what else is installed, and ask the vendor about "
        "dependencies and conflicts.");
  } else if (isKept && !fs::equivalent(opened, row.file, unknown)) {
    row.warnings.push_back("A start with all plug-ins loads " + opened + " instead.");
  }
}

StartReport JudgeStart(const ChildResult& result, std::chrono::seconds limit) {
  const auto answer = result.Last<StartAnswer>();
  if (!answer) return {true, "had an internal error: it gave no usable answer", std::nullopt};
  StartReport report{true, "", answer->findsDefault};
  if (answer->hasThrown) {
    report.problem = "threw an exception" + DuringStep(answer->step);
  } else if (answer->step != StartStep::kEnd || !result.HasExited(kDone)) {
    report.problem = DescribeEnd(result, limit) + DuringStep(answer->step);
  }
  return report;
}
