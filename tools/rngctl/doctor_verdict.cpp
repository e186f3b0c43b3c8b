#include "doctor_verdict.h"

#include "doctor_facts.h"
#include "host.h"

#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string WhereIn(const std::string& step, const ProviderCatalogueEntry& row) {
  if (step == "open") return " while it was opened";
  if (step == "factory") return " in its factory " + row.factorySymbol;
  if (step == "settings") return " while it took the settings";
  if (step == "available") return " when asked whether it is available";
  if (step == "name") return " when asked for its name";
  if (step == "flags") return " when asked for its flags";
  if (step == "release") return " while it was released";
  if (step == "close") return " while it was closed";
  return " while the process ended";
}

void Put(GeneratorReport& report, DoctorVerdict verdict, const std::string& summary,
         const std::string& mend) {
  report.verdict = verdict;
  report.summary = summary;
  report.mend = mend;
}

void PutNotInstalled(GeneratorReport& report, const SearchOrder& search) {
  const std::string place = search.directories.empty() ? "the search order" : search.directories[0];
  Put(report, DoctorVerdict::kNotInstalled, "not installed",
      "Where such a generator is wanted, install its maker's plug-in into " + place + ".");
}

std::string MendMissing(const GeneratorReport& report, const std::string& missing) {
  std::error_code unknown;
  const std::string needed = Quoted(missing) + ", which the plug-in needs,";
  if (!fs::exists(fs::path(report.file).parent_path() / missing, unknown)) {
    return "Install " + needed + " where the loader finds it.";
  }
  return "Install " + needed +
         " where the loader finds it, or ask for a plug-in with a run path: "
         "what lies beside a plug-in is not found by that alone.";
}

// The loader's words do not tell: it goes on to the next file, and speaks of the last.
std::string WhyPassedOver(const std::string& file) {
  std::error_code unknown;
  if (fs::is_symlink(file, unknown) && !fs::exists(file, unknown)) return "a link to nothing";
  return ::access(file.c_str(), R_OK) == 0 ? "it is made for another machine"
                                           : "this user may not read it";
}

void PutCannotBeOpened(GeneratorReport& report, const std::string& words,
                       const SearchOrder& search) {
  const auto end = words.find(": cannot open shared object file: ");
  const std::string missing = end == std::string::npos ? "" : words.substr(0, end);
  const std::string summary = "cannot be opened: ";
  if (missing.empty()) {
    Put(report, DoctorVerdict::kCannotBeOpened, summary + words,
        "Install the plug-in again, as its maker offers it for this system.");
  } else if (missing != report.libraryFile && missing != report.file) {
    Put(report, DoctorVerdict::kCannotBeOpened, summary + Quoted(missing) + " is missing: " + words,
        MendMissing(report, missing));
  } else if (!report.file.empty()) {
    Put(report, DoctorVerdict::kCannotBeOpened, summary + WhyPassedOver(report.file) + ": " + words,
        "See that " + report.file + " is a file that this user may read, made for this machine.");
  } else {
    PutNotInstalled(report, search);
  }
}

std::string MendDisturbance(const GeneratorReport& report, DoctorVerdict verdict,
                            const std::string& step) {
  if (step == "end") {
    return "Ask its maker for a better one: every program that opened it comes to the same at its "
           "own end.";
  }
  if (report.isKept) {
    const bool isInStop = step == "release" || step == "close";
    return "Ask its maker for a better one: the library lists it, and programs come to the same " +
           std::string(isInStop ? "when they stop it." : "when they look for a generator.");
  }
  if (step == "open" && verdict == DoctorVerdict::kCrashed) {
    return "Install it again, since the file may be incomplete, or ask its maker for a better one: "
           "until then no program gets through the start of the library.";
  }
  if (verdict == DoctorVerdict::kNoAnswer) {
    return "See that the device is connected and ready, or allow more time with --timeout: a "
           "program that starts the library waits as long.";
  }
  return "Remove the file or ask its maker for a better one: until then no program gets through "
         "the start of the library.";
}

// With `what` happening in `step`.
void PutDisturbance(GeneratorReport& report, DoctorVerdict verdict, const std::string& what,
                    const std::string& step, const ProviderCatalogueEntry& row) {
  Put(report, verdict, what + WhereIn(step, row), MendDisturbance(report, verdict, step));
}

DoctorVerdict VerdictOf(const ChildResult& result) {
  if (result.end == ChildEnd::kTimedOut) return DoctorVerdict::kNoAnswer;
  if (result.end == ChildEnd::kSignalled) return DoctorVerdict::kCrashed;
  return DoctorVerdict::kEndedProcess;
}

void PutOrdinary(GeneratorReport& report, const DoctorFacts& facts,
                 const ProviderCatalogueEntry& row, const SearchOrder& search) {
  const auto verdict = nlohmann::json(facts.Text("verdict")).get<DoctorVerdict>();
  switch (verdict) {
    case DoctorVerdict::kCannotBeOpened:
      return PutCannotBeOpened(report, facts.Text("openError"), search);
    case DoctorVerdict::kNoFactory:
      return Put(report, verdict, "no factory: the file has no function " + row.factorySymbol,
                 "Put the plug-in that is made for this kind in its place.");
    case DoctorVerdict::kFactoryGaveNothing:
      return Put(report, verdict, "factory gave nothing",
                 "See that what the plug-in needs is there: the device, its driver, its licence.");
    case DoctorVerdict::kNotAvailable:
      return Put(report, verdict, "not available",
                 "Connect the device, and see that its driver runs and that this user may use it.");
    case DoctorVerdict::kNameless:
      return Put(report, verdict, "loaded, but without a name: " + facts.Text("nameFault"),
                 "Ask its maker for a better one: programs find a generator by its name.");
    case DoctorVerdict::kWrongName:
      return Put(report, verdict, "loaded, but its name is " + Quoted(report.name),
                 "Ask for it by that name, or put the plug-in that is made for this kind in its "
                 "place.");
    default:
      return Put(report, verdict, "loaded as " + Quoted(report.name), "");
  }
}

void AddWarnings(GeneratorReport& report, const DoctorFacts& facts) {
  if (facts.Is("isFlagless")) {
    report.warnings.emplace_back(
        "It reports no capability: programs that list generators by what they are capable of do "
        "not see it, those that ask for its name do.");
  }
  report.stays = facts.Is("stays");
  if (report.stays) {
    report.warnings.emplace_back(
        "It stays in the process after it is closed, and comes to the next start as it was left.");
  }
}

}  // namespace

GeneratorReport JudgeRow(const ProviderCatalogueEntry& row, const ChildResult& result,
                         std::chrono::seconds limit, const SearchOrder& search) {
  const DoctorFacts facts(result);
  GeneratorReport report{row.name, row.libraryFile, facts.Text("file")};
  if (report.file.empty()) report.file = FindFirst(row.libraryFile, search);
  report.isKept = facts.Is("isKept");
  report.name = facts.Text("name");
  AddWarnings(report, facts);
  const std::string step = facts.Text("step");
  if (!facts.Text("called").empty()) {
    PutDisturbance(report, DoctorVerdict::kCallsBack,
                   "calls " + facts.Text("called") + ", as no plug-in may,", step, row);
  } else if (!HasComeToItsEnd(result)) {
    PutDisturbance(report, VerdictOf(result), EndInWords(result, limit), step, row);
  } else if (!facts.Text("thrownIn").empty()) {
    PutDisturbance(report, DoctorVerdict::kThrew, "threw an exception", facts.Text("thrownIn"),
                   row);
    report.summary += ": " + facts.Text("thrown");
  } else {
    PutOrdinary(report, facts, row, search);
  }
  return report;
}

std::string BindingWarning(const ChildResult& result) {
  const DoctorFacts facts(result);
  const std::string words = facts.Text("bindError");
  const std::string mark = "undefined symbol: ";
  const auto place = words.find(mark);
  if (!words.empty() && place == std::string::npos) {
    return "Not all that it needs is there: " + words + ".";
  }
  const std::string missing =
      words.empty() ? facts.Text("borrowed") : words.substr(place + mark.size());
  if (missing.empty()) return "";
  return "It needs the function " + Quoted(missing) +
         ", which is missing: a program that comes to call it is ended, unless another plug-in "
         "brings it.";
}

void CompareWithStart(GeneratorReport& row, const ChildResult& start) {
  std::error_code unknown;
  std::string opened;
  const DoctorFacts facts(start);
  if (facts.Text("step") == "start") return;  // it has not come far enough to tell
  for (const fs::path path : facts.List("opened")) {
    if (path.filename() == row.libraryFile) opened = path;
  }
  const bool isKept = !opened.empty() && (row.isKept || !row.stays);
  if (isKept != row.isKept) {
    row.isKept = isKept;
    Put(row, DoctorVerdict::kContradicted,
        row.summary + ", but a start with all plug-ins " +
            (isKept ? "keeps " + opened : "does not keep it"),
        "What the start does counts: look at what else is installed, and ask its maker what the "
        "plug-in needs beside it or does not bear.");
  } else if (isKept && !fs::equivalent(opened, row.file, unknown)) {
    row.warnings.push_back("A start with all plug-ins takes " + opened + " in its place.");
  }
}

StartReport JudgeStart(const ChildResult& result, std::chrono::seconds limit) {
  const DoctorFacts facts(result);
  StartReport report{true, "", facts.Is("findsDefault")};
  const bool hasThrown = facts.Is("thrown");
  if (HasComeToItsEnd(result)) return report;
  const std::string step = facts.Text("step");
  report.problem = (hasThrown ? "an exception" : EndInWords(result, limit)) +
                   (step == "start"     ? " in the start"
                    : step == "default" ? " in the search for the default"
                    : step == "stop"    ? " in the stop"
                                        : " while the process ended");
  return report;
}

GeneratorReport JudgeRowWithoutDisplay(const ProviderCatalogueEntry& row,
                                       const DisplayReport& display, const SearchOrder& search) {
  GeneratorReport report{row.name, row.libraryFile, FindFirst(row.libraryFile, search)};
  if (report.file.empty()) {
    PutNotInstalled(report, search);
  } else {
    Put(report, DoctorVerdict::kNoDisplay, "skipped: no X display, " + display.reason,
        display.mend);
  }
  return report;
}
