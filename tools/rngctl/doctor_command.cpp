#include "child.h"
#include "commands.h"
#include "doctor_facts.h"
#include "doctor_report.h"
#include "doctor_row.h"
#include "doctor_start.h"
#include "doctor_surroundings.h"
#include "doctor_verdict.h"
#include "host.h"
#include "providers/catalogue.h"
#include "terminal.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace fs = std::filesystem;

namespace {

using Limit = std::chrono::seconds;
using Rows = std::vector<ProviderCatalogueEntry>;

constexpr char kChildCommand[] = "doctor-child";
constexpr char kDisplay[] = "display";
constexpr char kSettings[] = "settings";
constexpr char kSearch[] = "search order";
constexpr char kStart[] = "start";
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
  SettingsReport report{facts.Text("file"),     facts.Is("exists"),      facts.Text("readingFault"),
                        facts.Is("isWritable"), facts.Text("service"),   "",
                        facts.Text("type"),     facts.Text("hardwareId")};
  if (!HasComeToItsEnd(result)) {
    const std::string place = report.file.empty() ? "the known-path service: " : "reading it: ";
    report.problem = place + EndInWords(result, limit);
  } else if (!facts.Is("isKnown")) {
    report.problem = "the known-path service names no directory";
  }
  return report;
}

// What an author may have misnamed. Letter case counts.
std::vector<std::string> ListStrays(const SearchOrder& search) {
  std::set<std::string> known;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) known.insert(row.libraryFile);
  std::set<std::string> strays;
  for (const std::string& directory : search.directories) {
    std::error_code absent;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, absent)) {
      const std::string name = entry.path().filename();
      const bool isNamedLikeOne = name.starts_with("librng") && name.ends_with(".so") &&
                                  !name.starts_with("librngaggregator");
      if (isNamedLikeOne && !known.contains(name)) strays.insert(entry.path());
    }
  }
  return {strays.begin(), strays.end()};
}

SearchOrder FindSearch(Limit limit) {
  const fs::path library = FindLibrary();
  const ChildResult result = Examine(kSearch, limit, {}, library.parent_path());
  return FindSearchOrder(DoctorFacts(result).List("systemDirectories").size());
}

GeneratorReport FindGenerator(const ProviderCatalogueEntry& row, const DoctorReport& found,
                              Limit limit) {
  if (row.needsDisplay && !found.display.isFound) {
    return JudgeRowWithoutDisplay(row, found.display, found.search);
  }
  const std::string taken = FindTaken(row.libraryFile, found.search);
  const std::string file = "--file=" + (taken.empty() ? row.libraryFile : taken);
  const ChildResult result = Examine(row.name, limit, {file});
  GeneratorReport report = JudgeRow(row, result, limit, found.search);
  const bool wasOpened = !DoctorFacts(result).Text("file").empty();
  const std::string warning =
      wasOpened ? BindingWarning(Examine(row.name, limit, {file, kForBinding})) : "";
  if (!warning.empty()) report.warnings.push_back(warning);
  return report;
}

// A program that comes to it goes no further, or not as it should.
bool IsDisturbance(const GeneratorReport& row) {
  const std::set<DoctorVerdict> disturbances = {
      DoctorVerdict::kCallsBack, DoctorVerdict::kThrew, DoctorVerdict::kCrashed,
      DoctorVerdict::kEndedProcess, DoctorVerdict::kNoAnswer};
  return disturbances.contains(row.verdict);
}

// What is known to disturb a start is not met again. One that is kept or only slow may let the start go
// on; whether the search for the default comes to it is not known.
StartReport ForeseeStart(const DoctorReport& report) {
  if (report.display.endsProcesses) return {false, "not tried, because of the X display", false};
  StartReport start{false, ""};
  for (const GeneratorReport& row : report.generators) {
    if (!IsDisturbance(row)) continue;
    start.problem += (start.problem.empty() ? "not tried, because of " : ", ") + row.kind;
    if (!row.isKept && row.verdict != DoctorVerdict::kNoAnswer) start.findsDefault = false;
  }
  return start;
}

StartReport FindStart(DoctorReport& report, Limit limit) {
  StartReport foreseen = ForeseeStart(report);
  if (!foreseen.problem.empty()) return foreseen;
  const Limit forAll = limit * report.generators.size();
  const ChildResult result = Examine(kStart, forAll);
  for (GeneratorReport& row : report.generators) CompareWithStart(row, result);
  return JudgeStart(result, forAll);
}

bool IsOutOfOrder(const GeneratorReport& row) {
  const std::set<DoctorVerdict> inOrder = {DoctorVerdict::kLoaded, DoctorVerdict::kNotInstalled,
                                           DoctorVerdict::kNoDisplay};
  return !inOrder.contains(row.verdict);
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
  if (report.start.isTried && !report.start.problem.empty()) {
    throw Refusal(kNegativeAnswer, "A start with all plug-ins: " + report.start.problem + ".");
  }
}

}  // namespace

void RunDoctor(const DoctorRequest& request) {
  const Limit limit(request.timeout);
  const Rows rows = ChooseRows(request.kind);
  DoctorReport report;
  report.search = FindSearch(limit);
  report.runPath = RunPathOf(report.search.library);
  report.strays = ListStrays(report.search);
  report.settings = FindSettings(limit, report.search);
  report.display = FindDisplay(limit, report.search);
  for (const ProviderCatalogueEntry& row : rows) {
    report.generators.push_back(FindGenerator(row, report, limit));
  }
  if (request.kind.empty()) report.start = FindStart(report, limit);
  request.asJson ? PrintJson(report) : PrintText(report);
  FinishOutput();
  Conclude(report, request.kind);
}

void RunDoctorChild(const DoctorChildRequest& request) {
  BecomeChild();
  if (request.subject == kDisplay) return ExamineDisplay();
  if (request.subject == kSettings) return ExamineSettings();
  if (request.subject == kSearch) return ExamineSearch();
  if (request.subject == kStart) return ExamineStart();
  if (request.isForBinding) ExamineBinding(request.file);
  ExamineRow(ChooseRows(request.subject).at(0), request.file);
}
