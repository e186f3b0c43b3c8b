#include "tools/rngctl/doctor/causes/reported.h"

#include "tools/rngctl/devices/ask.h"
#include "tools/rngctl/loader/elf_facts.h"
#include "tools/rngctl/terminal/wait_notice.h"

#include <set>

namespace {

// Other plug-ins are not started again: they would fail again, or there is none.
bool CanBeAsked(const GeneratorReport& report) {
  const std::set<DoctorVerdict> orderly = {DoctorVerdict::kLoaded, DoctorVerdict::kNameless,
                                           DoctorVerdict::kWrongName, DoctorVerdict::kNotAvailable,
                                           DoctorVerdict::kFactoryGaveNothing};
  return orderly.contains(report.verdict) && Exports(report.file, kReportFunction);
}

bool HasNoGenerator(const GeneratorReport& report) {
  return report.verdict == DoctorVerdict::kNotAvailable ||
         report.verdict == DoctorVerdict::kFactoryGaveNothing;
}

std::string Joined(const std::vector<std::string>& sentences) {
  std::string text;
  for (const std::string& sentence : sentences) text += (text.empty() ? "" : " ") + sentence;
  return text;
}

}  // namespace

void AddReported(GeneratorReport& report, const ProviderCatalogueEntry& row,
                 std::chrono::seconds limit) {
  if (!CanBeAsked(report)) return;
  const WaitNotice notice("Waiting for the devices of " + row.name + ", at most " +
                          std::to_string(limit.count()) + " s");
  const DeviceReport reported = AskForDevices(report.file, row.factorySymbol, limit);
  report.devices = reported.devices;
  report.problems = reported.problems;
  if (!reported.fault.empty()) report.warnings.push_back(reported.fault);
  if (HasNoGenerator(report) && !report.problems.empty()) report.fix = Joined(report.problems);
}
