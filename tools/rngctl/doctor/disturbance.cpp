#include "tools/rngctl/doctor/disturbance.h"

#include "tools/rngctl/terminal/text.h"

#include <set>

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
           "every program that starts the library waits just as long.";
  }
  return "Remove the file or get a fixed version from the vendor; until then every program that "
         "starts the library fails the same way.";
}

}  // namespace

void PutDisturbance(GeneratorReport& report, DoctorVerdict verdict, const std::string& what,
                    PluginStep step, const ProviderCatalogueEntry& row) {
  Put(report, verdict, what + WhereIn(step, row), FixDisturbance(report, verdict, step));
}

DoctorVerdict VerdictOf(const ChildResult& result) {
  if (result.end == ChildEnd::kTimedOut) return DoctorVerdict::kNoAnswer;
  if (result.end == ChildEnd::kSignalled) return DoctorVerdict::kCrashed;
  if (result.end == ChildEnd::kStopped) return DoctorVerdict::kStopped;
  return DoctorVerdict::kEndedProcess;
}

bool IsDisturbance(const GeneratorReport& row) {
  const std::set<DoctorVerdict> disturbances = {
      DoctorVerdict::kCallsBack, DoctorVerdict::kThrew,        DoctorVerdict::kCrashed,
      DoctorVerdict::kStopped,   DoctorVerdict::kEndedProcess, DoctorVerdict::kNoAnswer};
  return disturbances.contains(row.verdict);
}

std::string DescribePrinting(const PrintedLines& printed) {
  constexpr std::size_t kMostShown = 60;
  std::string line = printed.Lines().empty() ? "" : printed.Lines()[0].text;
  if (line.size() > kMostShown) line.replace(kMostShown, std::string::npos, "...");
  return "prints on standard output, so its text is mixed with the output of every program: " +
         Quoted(Printable(line)) + ". Report this to the vendor.";
}

std::string DescribeChange(const std::string& change) {
  return change + ", which affects the whole program. Report this to the vendor.";
}
