#include "tools/rngctl/doctor/doctor.h"

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/causes/cannot_open.h"
#include "tools/rngctl/doctor/causes/strays.h"
#include "tools/rngctl/doctor/start_verdict.h"
#include "tools/rngctl/doctor/surroundings.h"
#include "tools/rngctl/doctor/verdict.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/standard_output.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <set>

namespace {

using Limit = std::chrono::seconds;
using Rows = std::vector<ProviderCatalogueEntry>;

// The row of the kind, or all rows when no kind is given.
Rows ChooseRows(const std::string& kind) {
  Rows rows;
  std::string kinds;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    if (kind.empty() || kind == row.name) rows.push_back(row);
    kinds += (kinds.empty() ? "" : ", ") + row.name;
  }
  if (rows.empty()) {
    throw Refusal(kWrongUsage,
                  "There is no kind " + Quoted(kind) + "; the kinds are " + kinds + ".");
  }
  return rows;
}

// Only for a file that the loader can open: for any other the row already has the reason.
void WarnOfBinding(GeneratorReport& report, const std::string& path, Limit limit) {
  const ChildResult result = Ask({DoctorSubject::kBinding, report.kind, path}, report.kind, limit);
  const std::string warning = BindingWarning(result.Last<BindingAnswer>());
  if (!warning.empty()) report.warnings.push_back(warning);
}

GeneratorReport FindGenerator(const ProviderCatalogueEntry& row, const DoctorReport& found,
                              Limit limit) {
  if (row.needsDisplay && !found.display.isFound) {
    return JudgeRowWithoutDisplay(row, found.display, found.search);
  }
  const std::string first = FindFirst(row.libraryFile, found.search);
  if (const FileFault fault = FindFileFault(first); fault.isSpecial) {
    GeneratorReport report{row.name, row.libraryFile, first};
    PutSpecialFile(report, fault);
    return report;
  }
  const std::string taken = FindAsLoaderDoes(row.libraryFile, found.search);
  const std::string path = taken.empty() ? row.libraryFile : taken;
  const ChildResult result = Ask({DoctorSubject::kPlugin, row.name, path}, row.name, limit);
  GeneratorReport report = JudgeRow(row, result, limit, found.search);
  if (WasOpened(result)) WarnOfBinding(report, path, limit);
  return report;
}

// Such a plug-in makes every program fail that comes to this step.
bool IsDisturbance(const GeneratorReport& row) {
  const std::set<DoctorVerdict> disturbances = {
      DoctorVerdict::kCallsBack, DoctorVerdict::kThrew,        DoctorVerdict::kCrashed,
      DoctorVerdict::kStopped,   DoctorVerdict::kEndedProcess, DoctorVerdict::kNoAnswer};
  return disturbances.contains(row.verdict);
}

// The library is not started when a plug-in is known to disturb the start. If that plug-in is kept, or
// is only slow, the start might succeed, and it is unknown whether the default would be found.
StartReport ForeseeStart(const DoctorReport& report) {
  if (report.display.endsProcesses) return {false, "not tried because of the X display", false};
  StartReport start{false, ""};
  for (const GeneratorReport& row : report.generators) {
    if (!IsDisturbance(row)) continue;
    start.problem += (start.problem.empty() ? "not tried because of " : ", ") + row.kind;
    if (!row.isKept && row.verdict != DoctorVerdict::kNoAnswer) start.findsDefault = false;
  }
  return start;
}

StartReport FindStart(DoctorReport& report, Limit limit) {
  StartReport foreseen = ForeseeStart(report);
  if (!foreseen.problem.empty()) return foreseen;
  const Limit forAll = limit * report.generators.size();
  const ChildResult result = Ask({DoctorSubject::kStart}, "a start with all plug-ins", forAll);
  for (GeneratorReport& row : report.generators) CompareWithStart(row, result);
  return JudgeStart(result, forAll);
}

std::size_t Count(const std::vector<GeneratorReport>& rows, bool (*fits)(const GeneratorReport&)) {
  return static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(), fits));
}

bool IsNotUnderstood(const GeneratorReport& row) {
  return row.verdict == DoctorVerdict::kInternalError;
}

bool HasProblem(const GeneratorReport& row) {
  const std::set<DoctorVerdict> inOrder = {DoctorVerdict::kLoaded, DoctorVerdict::kNotInstalled,
                                           DoctorVerdict::kNoDisplay};
  return !inOrder.contains(row.verdict);
}

// Ends the command with a sentence and an exit status if something is wrong.
void Conclude(const DoctorReport& report, const std::string& kind) {
  const auto& rows = report.generators;
  if (!kind.empty() && rows[0].verdict != DoctorVerdict::kLoaded) {
    throw Refusal(kNegativeAnswer, Quoted(kind) + ": " + Printable(rows[0].summary) + ".");
  }
  if (!report.failures.empty()) throw Refusal(kNegativeAnswer, report.failures[0]);
  if (Count(rows, IsNotUnderstood) > 0) {
    throw Refusal(kNegativeAnswer, "Internal error: some plug-ins could not be examined.");
  }
  if (std::none_of(rows.begin(), rows.end(), [](const auto& row) { return row.isKept; })) {
    throw Refusal(kNothingUsable, "No generator is usable.");
  }
  if (report.display.endsProcesses) {
    throw Refusal(kNegativeAnswer, "The library cannot be started because of the X display.");
  }
  if (const std::size_t count = Count(rows, HasProblem); count > 0) {
    throw Refusal(kNegativeAnswer, Counted(count, "installed plug-in") +
                                       (count == 1 ? " has a problem." : " have problems."));
  }
  if (report.start.isTried && !report.start.problem.empty()) {
    throw Refusal(kNegativeAnswer, "A start with all plug-ins " + report.start.problem + ".");
  }
}

}  // namespace

void RunDoctor(const DoctorRequest& request) {
  const Limit limit(request.timeout);
  const Rows rows = ChooseRows(request.kind);
  DoctorReport report;
  report.search = FindSearch(limit, report.failures);
  report.runPath = RunPathOf(report.search.library);
  report.strays = ListStrays(report.search);
  report.settings = FindSettings(limit, report.search, report.failures);
  report.display = FindDisplay(limit, report.search, report.failures);
  for (const ProviderCatalogueEntry& row : rows) {
    report.generators.push_back(FindGenerator(row, report, limit));
  }
  if (request.kind.empty()) report.start = FindStart(report, limit);
  request.asJson ? PrintJson(report) : PrintText(report);
  FinishOutput();
  Conclude(report, request.kind);
}
