#include "tools/rngctl/doctor/verdict.h"

#include "tools/rngctl/doctor/disturbance.h"
#include "tools/rngctl/loader/error.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

void PutInternalError(GeneratorReport& report) {
  Put(report, DoctorVerdict::kInternalError,
      "internal error: the examination gave no usable answer",
      "Ask the vendor whether the plug-in writes to descriptors that are not its own. If it does "
      "not, report this as a bug of rngctl.");
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
         ", or ask the vendor for a plug-in with a run path: without one the loader does not "
         "search the plug-in's own directory.";
}

// The loader's message does not say: the loader skips the file, and reports only its last failure.
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
        "Reinstall the plug-in; use the vendor's build for this system.");
  } else if (missing != report.libraryFile && missing != report.file) {
    Put(report, DoctorVerdict::kCannotBeOpened,
        summary + Quoted(missing) + " is missing: " + error.words, FixMissing(report, missing));
  } else if (!report.file.empty()) {
    Put(report, DoctorVerdict::kCannotBeOpened,
        summary + WhyPassedOver(report.file) + ": " + error.words,
        "Make " + report.file +
            " a file that is built for this machine and that this user may read.");
  } else {
    PutNotInstalled(report, search);
  }
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
    Put(report, DoctorVerdict::kNameless, "loaded, but without a usable name: " + fault,
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
      return Put(
          report, DoctorVerdict::kFactoryGaveNothing, "its factory returned no generator",
          "Make sure that everything the plug-in needs is there: the device, its driver, its "
          "licence.");
    case PluginOutcome::kNotAvailable:
      return Put(report, DoctorVerdict::kNotAvailable, "not available",
                 "Connect the device, and make sure that its driver is running and that this user "
                 "may use it.");
    case PluginOutcome::kKept:
      return answer.name ? PutKept(report, *answer.name) : PutInternalError(report);
  }
}

void AddWarnings(GeneratorReport& report, const PluginAnswer& answer, const ChildResult& result) {
  if (answer.isFlagless) {
    report.warnings.emplace_back(
        "It reports no capability flags: programs that list generators by capability do not find "
        "it; programs that ask for it by name do.");
  }
  if (answer.staysLoaded) {
    report.warnings.emplace_back(
        "It stays in the process after it is closed, so the next start finds it in the state in "
        "which it was left.");
  }
  for (const std::string& process : result.leftRunning) {
    report.warnings.push_back("It leaves a process running: " + process + ".");
  }
}

void PutAnswer(GeneratorReport& report, const PluginAnswer& answer, const ChildResult& result,
               std::chrono::seconds limit, const ProviderCatalogueEntry& row,
               const SearchOrder& search) {
  if (answer.called) {
    return PutDisturbance(
        report, DoctorVerdict::kCallsBack,
        std::string("calls ") + NameOf(*answer.called) + ", which plug-ins must not do,",
        answer.step, row);
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

}  // namespace

GeneratorReport JudgeRow(const ProviderCatalogueEntry& row, const ChildResult& result,
                         std::chrono::seconds limit, const SearchOrder& search) {
  GeneratorReport report{row.name, row.libraryFile};
  const auto answer = result.Last<PluginAnswer>();
  if (answer) report.file = answer->file;
  if (report.file.empty()) report.file = FindFirst(row.libraryFile, search);
  if (!answer && result.isSilent && !result.HasExited(kDone)) {
    Put(report, VerdictOf(result), DescribeEnd(result, limit) + " before it was opened",
        "Check what LD_PRELOAD and LD_LIBRARY_PATH bring into every program, or allow more time "
        "with "
        "--timeout.");
    return report;
  }
  if (!answer) {
    PutInternalError(report);
    return report;
  }
  report.isKept = answer->isKept;
  report.staysLoaded = answer->staysLoaded;
  if (answer->name && FaultOf(*answer->name).empty()) report.name = answer->name->text;
  AddWarnings(report, *answer, result);
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
    return "Some of its dependencies are missing: " + error.words + ".";
  }
  const std::string& missing = error.words.empty() ? answer->undeclared : error.undefinedSymbol;
  if (missing.empty()) return "";
  return "It needs the function " + Quoted(missing) +
         ", which is missing: calling it terminates the program unless another plug-in provides "
         "it.";
}

GeneratorReport JudgeRowWithoutDisplay(const ProviderCatalogueEntry& row,
                                       const DisplayReport& display, const SearchOrder& search) {
  GeneratorReport report{row.name, row.libraryFile, FindFirst(row.libraryFile, search)};
  if (report.file.empty()) {
    PutNotInstalled(report, search);
  } else {
    Put(report, DoctorVerdict::kNoDisplay,
        "skipped because there is no X display: " + display.reason, display.fix);
  }
  return report;
}
