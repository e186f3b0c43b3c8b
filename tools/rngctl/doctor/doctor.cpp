#include "tools/rngctl/doctor/doctor.h"

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/causes/cannot_open.h"
#include "tools/rngctl/doctor/causes/reported.h"
#include "tools/rngctl/doctor/causes/special_files.h"
#include "tools/rngctl/doctor/causes/strays.h"
#include "tools/rngctl/doctor/other_library.h"
#include "tools/rngctl/doctor/permissions/permissions.h"
#include "tools/rngctl/doctor/settings/default_fault.h"
#include "tools/rngctl/doctor/settings/find_settings.h"
#include "tools/rngctl/doctor/start/comparison.h"
#include "tools/rngctl/doctor/start/contradiction.h"
#include "tools/rngctl/doctor/start/start_verdict.h"
#include "tools/rngctl/doctor/start/started_library.h"
#include "tools/rngctl/doctor/surroundings.h"
#include "tools/rngctl/doctor/verdict.h"
#include "tools/rngctl/process/descendants.h"
#include "tools/rngctl/process/descriptor.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/settings/kinds.h"
#include "tools/rngctl/terminal/standard_output.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <fcntl.h>
#include <set>

#include <rngaggregator/aggregator.h>

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
    const std::string meant = FindMeantKind(kind);
    const std::string guess = meant.empty() ? "; the" : "; did you mean " + Quoted(meant) + "? The";
    throw Refusal(kWrongUsage,
                  "There is no kind " + Quoted(kind) + guess + " kinds are " + kinds + ".");
  }
  return rows;
}

// Only for a file that the loader can open: for any other the row already has the reason.
void WarnOfBinding(GeneratorReport& report, const std::string& path, Limit limit) {
  const ChildResult result = Ask({DoctorSubject::kBinding, report.kind, path}, report.kind, limit);
  const std::string warning = BindingWarning(result.Last<BindingAnswer>());
  if (!warning.empty()) report.warnings.push_back(warning);
}

// The file that a start opened. If the start did not get that far, the one that the loader would open.
std::string FindPath(const ProviderCatalogueEntry& row, const SearchOrder& search,
                     const StartEvidence& start) {
  const StartAnswer* const answer = start.Fullest();
  const std::string taken = answer ? TakenFor(row.name, *answer) : "";
  if (IsPluginNamed(taken, row.libraryFile)) return taken;
  const std::string first = FindAsLoaderDoes(row.libraryFile, WithProcessorDirectories(search));
  return first.empty() ? row.libraryFile : first;
}

void WarnOfSecondFile(GeneratorReport& report, const SearchOrder& search) {
  const std::string expected = FindAsLoaderDoes(report.libraryFile, search);
  if (expected.empty() || IsSameFile(expected, report.file)) return;
  report.warnings.push_back("The loader opens " + report.file + " instead of " + expected +
                            ". Remove the one that you do not need.");
}

GeneratorReport FindGenerator(const ProviderCatalogueEntry& row, const DoctorReport& found,
                              const StartEvidence& start, Limit limit) {
  if (row.needsDisplay && !found.display.isFound) {
    return JudgeRowWithoutDisplay(row, found.display, found.search);
  }
  const std::string first = FindFirst(row.libraryFile, found.search);
  if (const FileFault fault = FindFileFault(first); fault.isSpecial) {
    GeneratorReport report{row.name, row.libraryFile, first};
    PutSpecialFile(report, fault);
    return report;
  }
  const std::string path = FindPath(row, found.search, start);
  const ChildResult result = Ask({DoctorSubject::kPlugin, row.name, path}, row.name, limit);
  GeneratorReport report = JudgeRow(row, result, limit, found.search);
  if (WasOpened(result)) {
    WarnOfBinding(report, path, limit);
    WarnOfSecondFile(report, found.search);
  }
  AddReported(report, row, limit);
  return report;
}

void FindGenerators(DoctorReport& report, const std::string& kind, Limit limit) {
  const SpecialFiles special = FindSpecialFiles(report.search, report.display.isFound);
  const bool isBlocked = !special.blocking.empty();
  const StartOrder order{kind, special.kinds, limit, !report.settings.endsHosts};
  const StartEvidence start = isBlocked ? StartEvidence{} : TryStart(order);
  for (const ProviderCatalogueEntry& row : ChooseRows(kind)) {
    GeneratorReport found = FindGenerator(row, report, start, limit);
    CompareWithStart(found, start, limit);
    if (found.verdict == DoctorVerdict::kLoaded && !start.ShowsLookup(row.name)) {
      const StartOrder lookup{row.name, special.kinds, limit, order.asksForDefault};
      CompareWithStart(found, TryLookup(lookup), limit);
    }
    report.generators.push_back(found);
  }
  report.start =
      isBlocked ? ReportBlockedStart(special) : JudgeStart(start, report.generators, limit);
  if (!order.asksForDefault) report.start.findsDefault.reset();
  report.defaultFault = FindDefaultFault(report);
}

std::size_t Count(const std::vector<GeneratorReport>& rows, bool (*fits)(const GeneratorReport&)) {
  return static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(), fits));
}

bool IsNotUnderstood(const GeneratorReport& row) {
  return row.verdict == DoctorVerdict::kInternalError;
}

// Where there is no terminal, a generator that asks in one is not available, and nothing is wrong with it.
bool LacksTerminal(const GeneratorReport& row) {
  if (row.verdict != DoctorVerdict::kNotAvailable || row.kind != rngBioKb) return false;
  const Descriptor terminal(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC));
  return terminal.Get() < 0;
}

bool HasProblem(const GeneratorReport& row) {
  const std::set<DoctorVerdict> inOrder = {DoctorVerdict::kLoaded, DoctorVerdict::kNotInstalled,
                                           DoctorVerdict::kNoDisplay};
  return row.failsInFlags || (!inOrder.contains(row.verdict) && !LacksTerminal(row));
}

// A host gets a generator that is loaded unless the library cannot even be started. An answer that was
// not understood does not show that.
void ConcludeKind(const DoctorReport& report) {
  const GeneratorReport& row = report.generators[0];
  const bool isLoaded = row.verdict == DoctorVerdict::kLoaded;
  if (isLoaded && !report.start.preventsUse) return;
  const std::string obstacle =
      isLoaded ? ", but a start with all plug-ins " + report.start.problem : "";
  throw Refusal(kNegativeAnswer, Quoted(row.kind) + ": " + row.summary + obstacle + ".");
}

std::string DescribeFailedStart(const StartReport& start) {
  return "A start with all plug-ins " + start.problem + ".";
}

std::string DescribeUnusableDefault(const DoctorReport& report) {
  const std::string& problem = report.defaultFault.problem;
  const std::string end = problem.ends_with('?') ? "" : ".";  // it may ask "did you mean ...?"
  return "The default " + Quoted(report.settings.type) + " cannot be used: " + problem + end;
}

// "" when programs get what the settings file is meant to configure.
std::string DescribeUnreadSettings(const SettingsReport& settings) {
  const std::string unread = "The settings file cannot be read: ";
  if (!settings.problem.empty()) return unread + Printable(settings.problem) + ".";
  if (!settings.fix.empty()) return unread + Printable(settings.readingFault) + ".";
  if (settings.ignored.problem.empty()) return "";
  return "The library ignores a line of the settings file: " + Printable(settings.ignored.problem) +
         ".";
}

// "" when all that root's processes load or write is safe.
std::string DescribeOpenPaths(const std::vector<PermissionReport>& permissions) {
  std::set<std::string> paths;
  for (const PermissionReport& finding : permissions) {
    if (finding.letsOthersChangeRoots) paths.insert(finding.path);
  }
  if (paths.empty()) return "";
  return "Other users can change " + Counted(paths.size(), "path") +
         " that root's processes load or write.";
}

void AddSentence(std::string& text, const std::string& sentence) {
  text += (text.empty() || sentence.empty() ? "" : " ") + sentence;
}

// Ends the command with a sentence and an exit status if something is wrong.
void Conclude(const DoctorReport& report, const std::string& kind) {
  const auto& rows = report.generators;
  if (!kind.empty()) ConcludeKind(report);
  if (!report.failures.empty()) throw Refusal(kNegativeAnswer, report.failures[0]);
  if (!kind.empty()) return;
  if (Count(rows, IsNotUnderstood) > 0) {
    throw Refusal(kNegativeAnswer, "Internal error: some plug-ins could not be examined.");
  }
  if (std::none_of(rows.begin(), rows.end(), [](const auto& row) { return row.isKept; })) {
    throw Refusal(kNothingUsable, "No generator is usable.");
  }
  if (report.display.endsProcesses) {
    throw Refusal(kNegativeAnswer, "The library cannot be started because of the X display.");
  }
  if (report.settings.endsHosts) {
    throw Refusal(kNegativeAnswer, "The default cannot be read: " + report.settings.problem + ".");
  }
  const std::size_t count = Count(rows, HasProblem);
  std::string problems;
  if (count > 0) {
    problems =
        Counted(count, "installed plug-in") + (count == 1 ? " has a problem." : " have problems.");
  }
  if (!report.start.problem.empty()) {
    AddSentence(problems, DescribeFailedStart(report.start));
  } else if (!report.defaultFault.problem.empty()) {
    AddSentence(problems, DescribeUnusableDefault(report));
  }
  AddSentence(problems, DescribeUnreadSettings(report.settings));
  AddSentence(problems, DescribeOpenPaths(report.permissions));
  if (!problems.empty()) throw Refusal(kNegativeAnswer, problems);
}

}  // namespace

void RunDoctor(const DoctorRequest& request) {
  const Limit limit(request.timeout);
  ChooseRows(request.kind);  // refuses an unknown kind before anything runs
  const std::set<pid_t> ownChildren = ListChildren();
  DoctorReport report;
  report.search = FindSearch(limit, report.failures);
  report.runPath = RunPathOf(report.search.library);
  report.libraryWarning = WarnOfOtherLibrary(report.search);
  report.strays = ListStrays(report.search);
  report.settings = FindSettings(limit, report.search, report.failures);
  report.display = FindDisplay(limit, report.search, report.failures);
  FindGenerators(report, request.kind, limit);
  report.permissions = FindPermissions(report);
  report.leftRunning = NameNewChildren(ownChildren);
  request.asJson ? PrintJson(report) : PrintText(report);
  FinishOutput();
  Conclude(report, request.kind);
}
