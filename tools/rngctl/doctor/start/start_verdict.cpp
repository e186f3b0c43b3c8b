#include "tools/rngctl/doctor/start/start_verdict.h"

#include "tools/rngctl/doctor/disturbance.h"
#include "tools/rngctl/doctor/start/culprit.h"
#include "tools/rngctl/doctor/start/delays.h"
#include "tools/rngctl/doctor/start/started_library.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <filesystem>

namespace {

using Limit = std::chrono::seconds;

std::string During(StartStep step, const std::string& subject) {
  switch (step) {
    case StartStep::kBegin:
      return " before it tried any plug-in";
    case StartStep::kDisplay:
      return " while looking for the X display";
    case StartStep::kTreat:
      return " while loading " + LibraryFileOf(subject);
    case StartStep::kLookUp:
      return " while looking up " + Quoted(subject);
    case StartStep::kDefault:
      return " during the search for the default";
    case StartStep::kDevice:
      return " while " + LibraryFileOf(subject) + " was selecting the configured device";
    case StartStep::kList:
      return " while listing the generators";
    case StartStep::kName:
      return " while asking " + std::filesystem::path(subject).filename().string() +
             " for its name";
    case StartStep::kStop:
      return " during the stop";
    default:
      return " while the process exited";
  }
}

// The child gave up: in a host, this call deadlocks or stops the library.
bool EndedAtCall(const StartAnswer& answer) {
  return answer.called && answer.step == answer.calledIn && answer.step != StartStep::kEnd;
}

std::string FindProblem(const StartEvidence& start, Limit limit) {
  const StartAnswer& answer = *start.answer;
  if (EndedAtCall(answer)) {
    const bool isLocked = !answer.seconds || answer.step == StartStep::kStop;
    return (isLocked ? "deadlocks" : "is undone") + std::string(" because a plug-in calls ") +
           NameOf(*answer.called) + During(answer.step, answer.subject);
  }
  if (answer.threwIn) {
    const bool isNow = answer.threwIn == answer.step;
    return "threw an exception" + During(*answer.threwIn, isNow ? answer.subject : "");
  }
  const bool hasEnded = answer.step == StartStep::kEnd && start.result.HasExited(kDone);
  const ForeignClose* const close = FindForeignClose(answer);
  if (hasEnded && close) return "succeeds by chance: " + close->closer + " closes " + close->closed;
  if (hasEnded) return "";
  return DescribeEnd(start.result, limit) + During(answer.step, answer.subject);
}

// Unknown after a timeout: a slow plug-in may still answer a host that waits longer.
std::optional<bool> FindsDefault(const StartEvidence& start) {
  const StartAnswer& answer = *start.answer;
  if (answer.findsDefault) return answer.findsDefault;
  const bool isHindered = !answer.seconds || answer.step == StartStep::kDefault;
  if (!isHindered || start.result.end == ChildEnd::kTimedOut) return std::nullopt;
  return false;
}

bool IsKnownChange(const std::string& change, const std::vector<GeneratorReport>& rows) {
  return std::any_of(rows.begin(), rows.end(), [&change](const GeneratorReport& row) {
    return std::find(row.changes.begin(), row.changes.end(), change) != row.changes.end();
  });
}

// Whether a row already says so. If none does, the cause is a plug-in that was not examined alone.
bool IsKnown(const std::vector<GeneratorReport>& rows, bool GeneratorReport::*fact) {
  return std::any_of(rows.begin(), rows.end(), [fact](const auto& row) { return row.*fact; });
}

std::vector<std::string> FindWarnings(const StartEvidence& start,
                                      const std::vector<GeneratorReport>& rows) {
  const std::string subject = "A start with all plug-ins ";
  std::vector<std::string> warnings;
  const std::string slowness = DescribeSlowness(*start.answer);
  if (!slowness.empty()) warnings.push_back(slowness);
  if (!start.result.output.Lines().empty() && !IsKnown(rows, &GeneratorReport::prints)) {
    warnings.push_back(subject + DescribePrinting(start.result.output));
  }
  for (const std::string& change : start.answer->changes) {
    if (!IsKnownChange(change, rows)) warnings.push_back(subject + DescribeChange(change));
  }
  return warnings;
}

bool IsExamined(const std::string& culprit, const std::vector<GeneratorReport>& rows) {
  return culprit == kDisplayCulprit ||
         std::any_of(rows.begin(), rows.end(),
                     [&culprit](const GeneratorReport& row) { return row.kind == culprit; });
}

}  // namespace

StartReport JudgeStart(const StartEvidence& start, const std::vector<GeneratorReport>& rows,
                       Limit limit) {
  StartReport report;
  report.isTried = true;
  if (!start.answer) {
    const bool isSilent = start.result.isSilent && !start.result.HasExited(kDone);
    report.problem = isSilent ? DescribeEnd(start.result, limit) + During(StartStep::kBegin, "")
                              : "had an internal error: it gave no usable answer";
    return report;
  }
  report.seconds = start.answer->seconds;
  report.preventsUse = !start.answer->seconds;
  report.problem = FindProblem(start, limit);
  report.findsDefault = FindsDefault(start);
  report.acceptsDevice = start.answer->acceptsDevice;
  report.warnings = FindWarnings(start, rows);
  if (report.problem.empty()) return report;
  report.culprit = FindCulprit(start, rows);
  if (!report.culprit.empty() && !IsExamined(report.culprit, rows)) {
    report.warnings.push_back("The plug-in for " + Quoted(report.culprit) +
                              " makes the start fail. Run \"rngctl doctor " + report.culprit +
                              "\" to find out more.");
  }
  return report;
}
