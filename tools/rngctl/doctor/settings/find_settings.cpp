#include "tools/rngctl/doctor/settings/find_settings.h"

#include "tools/rngctl/doctor/surroundings.h"
#include "tools/rngctl/refusal.h"

namespace {

constexpr char kService[] = "libcrypt_known_path.so";

std::string WhatEnded(SettingsStep step) {
  return step == SettingsStep::kDefault ? "the process that reads it " : "the known-path service ";
}

std::string FixService(const SettingsReport& report, const SearchOrder& search) {
  const std::string found = report.service.empty() ? FindFirst(kService, search) : report.service;
  const std::string consequence =
      report.endsHosts ? "Until then, every program that asks for the default fails the same way."
                       : "Until then, the library reads no configured default and stores none.";
  return "Reinstall or update the known-path service, " + (found.empty() ? kService : found) +
         ". " + consequence;
}

std::string DescribeException(const std::string& message) {
  return "threw an exception" + (message.empty() ? "" : ": " + message);
}

// The known-path service fails, or reading the file does not return.
void AddProblem(SettingsReport& report, const SettingsAnswer& answer, const ChildResult& result,
                std::chrono::seconds limit) {
  const bool hasFinished = answer.step == SettingsStep::kEnd && result.HasExited(kDone);
  if (answer.exception || !hasFinished) {
    report.problem =
        WhatEnded(answer.step) +
        (answer.exception ? DescribeException(*answer.exception) : DescribeEnd(result, limit));
    report.endsHosts = answer.step <= SettingsStep::kDefault;
  } else if (answer.isFifo) {
    report.problem = "it is a named pipe (FIFO), so programs that ask for the default hang";
    report.endsHosts = true;
  } else if (!answer.isKnown) {
    report.problem = "the known-path service returns no directory";
  }
  if (report.writingFault.empty() && answer.step == SettingsStep::kDefault) {
    report.writingFault = "it cannot be read";  // which storing does, too
  }
}

std::string FindFix(const SettingsReport& report, const SettingsAnswer& answer,
                    const SearchOrder& search) {
  if (answer.isFifo) {
    return "Remove the named pipe " + report.file + ": the library expects a file there.";
  }
  if (report.problem.empty()) return answer.readingFix;
  if (answer.step != SettingsStep::kDefault) return FixService(report, search);
  return "Replace " + report.file + " with a file that can be read to its end.";
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
  report.ignored = answer.ignored;
  report.dataFile = answer.dataFile;
  AddProblem(report, answer, result, limit);
  report.fix = FindFix(report, answer, search);
  return report;
}
