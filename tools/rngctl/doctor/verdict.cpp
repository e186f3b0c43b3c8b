#include "tools/rngctl/doctor/verdict.h"

#include "tools/rngctl/loader/error.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string WhereIn(PluginStep step, const ProviderCatalogueEntry& row) {
  switch (step) {
    case PluginStep::kOpen:
      return " while being opened";
    case PluginStep::kFactory:
      return " in its factory " + row.factorySymbol;
    case PluginStep::kSettings:
      return " while receiving the settings";
    case PluginStep::kAvailable:
      return " when asked whether it is available";
    case PluginStep::kName:
      return " when asked for its name";
    case PluginStep::kFlags:
      return " when asked for its flags";
    case PluginStep::kRelease:
      return " while being released";
    case PluginStep::kClose:
      return " while being closed";
    default:
      return " while the process exited";
  }
}

void Put(GeneratorReport& report, DoctorVerdict verdict, const std::string& summary,
         const std::string& fix) {
  report.verdict = verdict;
  report.summary = summary;
  report.fix = fix;
}

void PutInternalError(GeneratorReport& report) {
  Put(report, DoctorVerdict::kInternalError,
      "internal error: the examination gave no usable answer",
      "Run the command again; if the error persists, report it as a bug of rngctl.");
}

void PutNotInstalled(GeneratorReport& report, const SearchOrder& search) {
  const std::string place = search.directories.empty() ? "the search order" : search.directories[0];
  Put(report, DoctorVerdict::kNotInstalled, "not installed",
      "To use this generator, install the vendor's plug-in in " + place + ".");
}

std::string FixMissing(const GeneratorReport& report, const std::string& missing) {
  const std::string fix =
      "Install the plug-in's dependency " + Quoted(missing) + " where the loader finds it";
  std::error_code unknown;
  if (!fs::exists(fs::path(report.file).parent_path() / missing, unknown)) return fix + ".";
  return fix +
         ", or ask the vendor for a plug-in with a run path: without one the loader does not find "
         "what lies beside the plug-in.";
}

// The loader's words do not tell: it goes on to the next file, and reports the last.
std::string WhyPassedOver(const std::string& file) {
  std::error_code unknown;
  if (fs::is_symlink(file, unknown) && !fs::exists(file, unknown)) return "it is a dangling link";
  return ::access(file.c_str(), R_OK) == 0 ? "it is built for another machine"
                                           : "this user may not read it";
}

void PutCannotBeOpened(GeneratorReport& report, const LoaderError& error,
                       const SearchOrder& search) {
  const std::string summary = "cannot be opened: ";
  const std::string& missing = error.missingFile;
  if (missing.empty()) {
    Put(report, DoctorVerdict::kCannotBeOpened, summary + error.words,
        "Reinstall the plug-in, in the vendor's build for this system.");
  } else if (missing != report.libraryFile && missing != report.file) {
    Put(report, DoctorVerdict::kCannotBeOpened,
        summary + Quoted(missing) + " is missing: " + error.words, FixMissing(report, missing));
  } else if (!report.file.empty()) {
    Put(report, DoctorVerdict::kCannotBeOpened,
        summary + WhyPassedOver(report.file) + ": " + error.words,
        "Make " + report.file + " a file that this user may read, built for this machine.");
  } else {
    PutNotInstalled(report, search);
  }
}

std::string FixDisturbance(const GeneratorReport& report, DoctorVerdict verdict, PluginStep step) {
  if (step == PluginStep::kEnd) {
    return "Report this to the vendor: every program that loads the plug-in fails the same way on "
           "exit.";
  }
  if (report.isKept) {
    const bool isInStop = step == PluginStep::kRelease || step == PluginStep::kClose;
    return "Report this to the vendor: the library lists the generator, and programs fail the same "
           "way when they " +
           std::string(isInStop ? "stop the library." : "look up a generator.");
  }
  if (step == PluginStep::kOpen && verdict == DoctorVerdict::kCrashed) {
    return "Reinstall the file, which may be incomplete, or get a fixed version from the vendor; "
           "until then every program that starts the library fails the same way.";
  }
  if (verdict == DoctorVerdict::kNoAnswer) {
    return "Make sure that the device is connected and ready, or allow more time with --timeout; "
           "every program that starts the library waits as long.";
  }
  return "Remove the file or get a fixed version from the vendor; until then every program that "
         "starts the library fails the same way.";
}

// With `what` happening in `step`.
void PutDisturbance(GeneratorReport& report, DoctorVerdict verdict, const std::string& what,
                    PluginStep step, const ProviderCatalogueEntry& row) {
  Put(report, verdict, what + WhereIn(step, row), FixDisturbance(report, verdict, step));
}

DoctorVerdict VerdictOf(const ChildResult& result) {
  if (result.end == ChildEnd::kTimedOut) return DoctorVerdict::kNoAnswer;
  if (result.end == ChildEnd::kSignalled) return DoctorVerdict::kCrashed;
  return DoctorVerdict::kEndedProcess;
}

// Why the name cannot be used; "" when it can.
std::string FaultOf(const ReportedName& name) {
  if (name.size == 0) return "it reports none";
  if (name.size < 0) {
    return "it reports a size of " + std::to_string(name.size) +
           ", which makes every lookup that reaches it fail";
  }
  if (name.sizeAgain != name.size) {
    return "it reports a size of " + std::to_string(name.size) + ", then of " +
           std::to_string(name.sizeAgain);
  }
  return name.text.empty() ? "it reports an empty one" : "";
}

void PutKept(GeneratorReport& report, const ReportedName& name) {
  const std::string fault = FaultOf(name);
  if (!fault.empty()) {
    Put(report, DoctorVerdict::kNameless, "loaded, but without a name: " + fault,
        "Report this to the vendor: programs find a generator by its name.");
  } else if (name.text != report.kind) {
    Put(report, DoctorVerdict::kWrongName, "loaded, but its name is " + Quoted(name.text),
        "Ask for it by that name, or replace the file with the plug-in for this kind.");
  } else {
    Put(report, DoctorVerdict::kLoaded, "loaded as " + Quoted(name.text), "");
  }
}

void PutOutcome(GeneratorReport& report, const PluginAnswer& answer,
                const ProviderCatalogueEntry& row, const SearchOrder& search) {
  if (!answer.outcome) return PutInternalError(report);
  switch (*answer.outcome) {
    case PluginOutcome::kNotOpened:
      return PutCannotBeOpened(report, ParseLoaderError(answer.openError), search);
    case PluginOutcome::kNoFactory:
      return Put(report, DoctorVerdict::kNoFactory,
                 "no factory: the file does not export " + row.factorySymbol,
                 "Replace the file with the plug-in for this kind.");
    case PluginOutcome::kFactoryReturnedNull:
      return Put(report, DoctorVerdict::kFactoryGaveNothing, "its factory returned no generator",
                 "Make sure that what the plug-in needs is there: the device, its driver, its "
                 "licence.");
    case PluginOutcome::kNotAvailable:
      return Put(report, DoctorVerdict::kNotAvailable, "not available",
                 "Connect the device, and make sure that its driver is running and that this user "
                 "may use it.");
    case PluginOutcome::kKept:
      return answer.name ? PutKept(report, *answer.name) : PutInternalError(report);
  }
}

void AddWarnings(GeneratorReport& report, const PluginAnswer& answer) {
  if (answer.isFlagless) {
    report.warnings.emplace_back(
        "It reports no capability flags: programs that list generators by capability do not find "
        "it; programs that ask for it by name do.");
  }
  if (answer.staysLoaded) {
    report.warnings.emplace_back(
        "It stays in the process after it is closed, so the next start finds it as it was left.");
  }
}

void PutAnswer(GeneratorReport& report, const PluginAnswer& answer, const ChildResult& result,
               std::chrono::seconds limit, const ProviderCatalogueEntry& row,
               const SearchOrder& search) {
  if (answer.called) {
    return PutDisturbance(
        report, DoctorVerdict::kCallsBack,
        std::string("calls ") + NameOf(*answer.called) + ", which no plug-in may,", answer.step,
        row);
  }
  if (answer.step != PluginStep::kEnd || !result.HasExited(kDone)) {
    return PutDisturbance(report, VerdictOf(result), DescribeEnd(result, limit), answer.step, row);
  }
  if (answer.threwIn) {
    PutDisturbance(report, DoctorVerdict::kThrew, "threw an exception", *answer.threwIn, row);
    if (!answer.exception.empty()) report.summary += ": " + answer.exception;
    return;
  }
  PutOutcome(report, answer, row, search);
}

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

GeneratorReport JudgeRow(const ProviderCatalogueEntry& row, const ChildResult& result,
                         std::chrono::seconds limit, const SearchOrder& search) {
  GeneratorReport report{row.name, row.libraryFile};
  const auto answer = result.Last<PluginAnswer>();
  if (answer) report.file = answer->file;
  if (report.file.empty()) report.file = FindFirst(row.libraryFile, search);
  if (!answer) {
    PutInternalError(report);
    return report;
  }
  report.isKept = answer->isKept;
  report.staysLoaded = answer->staysLoaded;
  if (answer->name && FaultOf(*answer->name).empty()) report.name = answer->name->text;
  AddWarnings(report, *answer);
  PutAnswer(report, *answer, result, limit, row, search);
  return report;
}

bool WasOpened(const ChildResult& result) {
  const auto answer = result.Last<PluginAnswer>();
  return answer && !answer->file.empty();
}

std::string BindingWarning(const std::optional<BindingAnswer>& answer) {
  if (!answer) return "";
  const LoaderError error = ParseLoaderError(answer->bindError);
  if (!error.words.empty() && error.undefinedSymbol.empty()) {
    return "Not all of its dependencies are there: " + error.words + ".";
  }
  const std::string& missing = error.words.empty() ? answer->undeclared : error.undefinedSymbol;
  if (missing.empty()) return "";
  return "It needs the function " + Quoted(missing) +
         ", which is missing: calling it terminates the program unless another plug-in provides "
         "it.";
}

void CompareWithStart(GeneratorReport& row, const ChildResult& start) {
  const auto answer = start.Last<StartAnswer>();
  if (!answer || answer->step == StartStep::kStart) return;  // it did not get far enough to tell
  std::string opened;
  for (const fs::path path : answer->opened) {
    if (path.filename() == row.libraryFile) opened = path;
  }
  const bool isKept = !opened.empty() && (row.isKept || !row.staysLoaded);
  std::error_code unknown;
  if (isKept != row.isKept) {
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

GeneratorReport JudgeRowWithoutDisplay(const ProviderCatalogueEntry& row,
                                       const DisplayReport& display, const SearchOrder& search) {
  GeneratorReport report{row.name, row.libraryFile, FindFirst(row.libraryFile, search)};
  if (report.file.empty()) {
    PutNotInstalled(report, search);
  } else {
    Put(report, DoctorVerdict::kNoDisplay, "skipped: no X display, " + display.reason, display.fix);
  }
  return report;
}
