#include "tools/rngctl/doctor/verdict.h"

#include "tools/rngctl/doctor/causes/cannot_open.h"
#include "tools/rngctl/doctor/causes/unavailable.h"
#include "tools/rngctl/doctor/causes/wrong_kind.h"
#include "tools/rngctl/doctor/disturbance.h"
#include "tools/rngctl/loader/error.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

namespace {

void PutInternalError(GeneratorReport& report) {
  Put(report, DoctorVerdict::kInternalError,
      "internal error: the examination gave no usable answer",
      "Ask the vendor whether the plug-in writes to descriptors that are not its own. If it does "
      "not, report this as a bug of rngctl.");
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
        FixWrongName(report, name.text));
  } else {
    Put(report, DoctorVerdict::kLoaded, "loaded as " + Quoted(name.text), "");
  }
}

void PutOutcome(GeneratorReport& report, const PluginAnswer& answer,
                const ProviderCatalogueEntry& row, const SearchOrder& search) {
  if (!answer.outcome) return PutInternalError(report);
  switch (*answer.outcome) {
    case PluginOutcome::kNotOpened:
      return PutCannotBeOpened(report, answer.openError, search);
    case PluginOutcome::kNoFactory:
      return Put(report, DoctorVerdict::kNoFactory,
                 "no factory: the file does not export " + row.factorySymbol,
                 FixWrongFactory(report));
    case PluginOutcome::kFactoryReturnedNull:
      return Put(report, DoctorVerdict::kFactoryGaveNothing, "its factory returned no generator",
                 FixUnavailable(row, answer.dataFile));
    case PluginOutcome::kNotAvailable:
      return Put(report, DoctorVerdict::kNotAvailable, "not available",
                 FixUnavailable(row, answer.dataFile));
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
  if (report.prints) report.warnings.push_back("It " + DescribePrinting(result.output));
  for (const std::string& change : report.changes) {
    report.warnings.push_back("It " + DescribeChange(change));
  }
}

// How asking for the flags ended, if it did not return; "" otherwise.
std::string DescribeFailureInFlags(const PluginAnswer& answer, const ChildResult& result,
                                   std::chrono::seconds limit) {
  const bool hasEnded = answer.step == PluginStep::kEnd && result.HasExited(kDone);
  if (answer.called) return "";
  if (!hasEnded) return answer.step == PluginStep::kFlags ? DescribeEnd(result, limit) : "";
  if (answer.threwIn != PluginStep::kFlags) return "";
  return "threw an exception" + (answer.exception.empty() ? "" : ": " + answer.exception);
}

// Programs that look the generator up by name get it anyway.
void PutFailureInFlags(GeneratorReport& report, const PluginAnswer& answer,
                       const std::string& failure) {
  report.failsInFlags = true;
  report.warnings.push_back("When asked for its capability flags, it " + failure +
                            ". Programs that list generators by capability fail the same way; "
                            "programs that ask for it by name get it. Report this to the vendor.");
  answer.name ? PutKept(report, *answer.name) : PutInternalError(report);
}

void PutAnswer(GeneratorReport& report, const PluginAnswer& answer, const ChildResult& result,
               std::chrono::seconds limit, const ProviderCatalogueEntry& row,
               const SearchOrder& search) {
  const std::string flags = DescribeFailureInFlags(answer, result, limit);
  if (!flags.empty()) return PutFailureInFlags(report, answer, flags);
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
        "Check what LD_PRELOAD and LD_LIBRARY_PATH bring into every program, or allow more "
        "time with --timeout.");
    return report;
  }
  if (!answer) {
    PutInternalError(report);
    return report;
  }
  report.isKept = answer->isKept;
  report.staysLoaded = answer->staysLoaded;
  report.isFlagless = answer->isFlagless;
  report.prints = !result.output.Lines().empty();
  report.changes = answer->changes;
  report.dependencies = answer->dependencies;
  report.seconds = answer->seconds;
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
  if (answer->isOfLibrary) {
    return "It uses the function " + Quoted(answer->undeclared) +
           " of librngaggregator.so but is not linked with that library. It works in programs that "
           "are linked with the library, and fails in programs that open it with dlopen. Ask the "
           "vendor to link the plug-in with -lrngaggregator.";
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
