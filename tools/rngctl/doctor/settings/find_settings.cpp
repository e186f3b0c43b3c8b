#include "tools/rngctl/doctor/settings/find_settings.h"

#include "tools/rngctl/doctor/surroundings.h"
#include "tools/rngctl/refusal.h"

namespace {

std::string WhatEnded(SettingsStep step) {
  return step == SettingsStep::kDefault ? "the process that reads it " : "the known-path service ";
}

void AddProblem(SettingsReport& report, const SettingsAnswer& answer, const ChildResult& result,
                std::chrono::seconds limit) {
  const bool hasFinished = answer.step == SettingsStep::kEnd && result.HasExited(kDone);
  if (!hasFinished) {
    report.problem = WhatEnded(answer.step) + DescribeEnd(result, limit);
    report.endsHosts = answer.step <= SettingsStep::kDefault;
  } else if (answer.isFifo) {
    report.problem = "it is a FIFO, so programs that ask for the default hang";
    report.endsHosts = true;
  } else if (!answer.isKnown) {
    report.problem = "the known-path service returns no directory";
  }
  if (report.writingFault.empty() && answer.step == SettingsStep::kDefault) {
    report.writingFault = "it cannot be read";  // which storing does, too
  }
}

}  // namespace

SettingsReport FindSettings(std::chrono::seconds limit, const SearchOrder& search,
                            std::vector<std::string>& failures) {
  const ChildResult result =
      Ask({DoctorSubject::kSettings}, "the settings", limit, AsLibraryPath(search));
  const auto answer = Understand<SettingsAnswer>(result, "the settings", limit, failures);
  SettingsReport report;
  report.file = answer.file;
  report.exists = answer.exists;
  report.readingFault = answer.readingFault;
  report.writingFault = answer.writingFault;
  report.service = answer.service;
  report.type = answer.type;
  report.hardwareId = answer.hardwareId;
  report.dataFile = answer.dataFile;
  AddProblem(report, answer, result, limit);
  return report;
}
