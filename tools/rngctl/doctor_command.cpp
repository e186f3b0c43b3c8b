#include "child.h"
#include "commands.h"
#include "doctor_facts.h"
#include "doctor_report.h"
#include "doctor_row.h"
#include "doctor_surroundings.h"
#include "doctor_verdict.h"
#include "host.h"
#include "providers/catalogue.h"
#include "terminal.h"

#include <algorithm>
#include <set>

namespace {

using Limit = std::chrono::seconds;
using Rows = std::vector<ProviderCatalogueEntry>;

constexpr char kChildCommand[] = "doctor-child";
constexpr char kDisplay[] = "display";
constexpr char kSettings[] = "settings";
constexpr char kForBinding[] = "--binding";

// One row, or all without a kind.
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

ChildResult Examine(const std::string& subject, Limit limit,
                    const std::vector<std::string>& options = {},
                    const std::string& libraryPath = "") {
  const WaitNotice notice("Waiting for " + subject + ", at most " + std::to_string(limit.count()) +
                          " s");
  std::vector<std::string> arguments = {kChildCommand, subject};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return RunChild(arguments, limit, libraryPath);
}

DisplayReport FindDisplay(Limit limit, const SearchOrder& search) {
  const ChildResult result = Examine(kDisplay, limit, {}, AsLibraryPath(search));
  const DoctorFacts facts(result);
  if (HasComeToItsEnd(result)) {
    return {facts.Is("isFound"), false, facts.Text("reason"), facts.Text("mend")};
  }
  return {false, true, "the attempt to open it: " + EndInWords(result, limit),
          "Correct DISPLAY, or mend the X server or libX11.so.6: until then every program that "
          "starts the library comes to the same."};
}

SettingsReport FindSettings(Limit limit, const SearchOrder& search) {
  const ChildResult result = Examine(kSettings, limit, {}, AsLibraryPath(search));
  const DoctorFacts facts(result);
  SettingsReport report{facts.Text("file"),     facts.Is("exists"),      facts.Is("isReadable"),
                        facts.Is("isWritable"), facts.Text("service"),   "",
                        facts.Text("type"),     facts.Text("hardwareId")};
  if (!HasComeToItsEnd(result)) {
    report.problem = "the known-path service: " + EndInWords(result, limit);
  } else if (!facts.Is("isKnown")) {
    report.problem = "the known-path service names no directory";
  }
  return report;
}

GeneratorReport FindGenerator(const ProviderCatalogueEntry& row, const DoctorReport& found,
                              Limit limit) {
  if (row.needsDisplay && !found.display.isFound) {
    return JudgeRowWithoutDisplay(row, found.display, found.search);
  }
  const ChildResult result = Examine(row.name, limit);
  GeneratorReport report = JudgeRow(row, result, limit, found.search);
  const bool wasOpened = !DoctorFacts(result).Text("file").empty();
  const std::string warning =
      wasOpened ? BindingWarning(Examine(row.name, limit, {kForBinding})) : "";
  if (!warning.empty()) report.warnings.push_back(warning);
  return report;
}

// Whether no host gets through the start, because of this plug-in.
bool EndsEveryStart(const GeneratorReport& row) {
  const std::set<DoctorVerdict> ends = {DoctorVerdict::kCrashed, DoctorVerdict::kEndedProcess,
                                        DoctorVerdict::kNoAnswer};
  return !row.isKept && ends.count(row.verdict) > 0;
}

std::optional<bool> FindsDefault(const DoctorReport& report, bool isWhole) {
  const SettingsReport& settings = report.settings;
  if (settings.type.empty()) return std::nullopt;
  if (std::max(settings.type.size(), settings.hardwareId.size()) >= kRngNameSize) return false;
  const auto& rows = report.generators;
  if (report.display.endsProcesses || std::any_of(rows.begin(), rows.end(), EndsEveryStart)) {
    return false;
  }
  for (const GeneratorReport& row : rows) {
    if (row.isKept && row.name == settings.type) return true;
    if (!row.isKept && row.verdict == DoctorVerdict::kThrew) return false;  // the walk ends there
  }
  return isWhole ? std::optional(false) : std::nullopt;
}

bool IsOutOfOrder(const GeneratorReport& row) {
  return row.verdict != DoctorVerdict::kLoaded && row.verdict != DoctorVerdict::kNotInstalled;
}

// A sentence and the exit status, where the answer is not a good one.
void Conclude(const DoctorReport& report, const std::string& kind) {
  const auto& rows = report.generators;
  if (!kind.empty() && rows[0].verdict != DoctorVerdict::kLoaded) {
    throw Refusal(kNegativeAnswer, Quoted(kind) + ": " + Printable(rows[0].summary) + ".");
  }
  if (std::none_of(rows.begin(), rows.end(), [](const auto& row) { return row.isKept; })) {
    throw Refusal(kNothingUsable, "No generator is usable.");
  }
  if (report.display.endsProcesses) {
    throw Refusal(kNegativeAnswer, "The library cannot be started, because of the X display.");
  }
  const auto count = std::count_if(rows.begin(), rows.end(), IsOutOfOrder);
  if (count > 0) {
    throw Refusal(kNegativeAnswer, std::to_string(count) + " of the installed plug-ins " +
                                       (count == 1 ? "is" : "are") + " not in order.");
  }
}

}  // namespace

void RunDoctor(const DoctorRequest& request) {
  const Limit limit(request.timeout);
  const Rows rows = ChooseRows(request.kind);
  const SearchOrder search = FindSearchOrder();
  DoctorReport report{search, "", FindSettings(limit, search), FindDisplay(limit, search), {}, {}};
  report.runPath = RunPathOf(report.search.library);
  for (const ProviderCatalogueEntry& row : rows) {
    report.generators.push_back(FindGenerator(row, report, limit));
  }
  report.findsDefault = FindsDefault(report, request.kind.empty());
  request.asJson ? PrintJson(report) : PrintText(report);
  Conclude(report, request.kind);
}

void RunDoctorChild(const DoctorChildRequest& request) {
  BecomeChild();
  if (request.subject == kDisplay) return ExamineDisplay();
  if (request.subject == kSettings) return ExamineSettings();
  const ProviderCatalogueEntry row = ChooseRows(request.subject).at(0);
  request.isForBinding ? ExamineBinding(row) : ExamineRow(row);
}
