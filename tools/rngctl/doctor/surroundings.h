#ifndef TOOLS_RNGCTL_DOCTOR_SURROUNDINGS_H
#define TOOLS_RNGCTL_DOCTOR_SURROUNDINGS_H

#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/process/child.h"

/// Asks a child, and shows the user what rngctl is waiting for.
ChildResult Ask(const DoctorQuestion& question, const std::string& waitedFor,
                std::chrono::seconds limit, const std::string& libraryPath = "");

/// In a sentence.
std::string DescribeMissingAnswer(const ChildResult& result, const std::string& subject,
                                  std::chrono::seconds limit);

/// The child's answer; without one the answer of a child that did nothing, and a failure of the doctor.
template <typename Answer>
Answer Understand(const ChildResult& result, const std::string& subject, std::chrono::seconds limit,
                  std::vector<std::string>& failures) {
  if (const auto answer = result.Last<Answer>()) return *answer;
  failures.push_back(DescribeMissingAnswer(result, subject, limit));
  return {};
}

/// What is found out before any plug-in is examined. The X library is third-party code, too, so a
/// child asks it. Where a child gives no usable answer, that is added to
/// `failures` in a sentence, and the rest of the examination goes on.
SearchOrder FindSearch(std::chrono::seconds limit, std::vector<std::string>& failures);
DisplayReport FindDisplay(std::chrono::seconds limit, const SearchOrder& search,
                          std::vector<std::string>& failures);

#endif
