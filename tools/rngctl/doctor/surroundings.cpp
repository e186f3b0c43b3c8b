#include "tools/rngctl/doctor/surroundings.h"

#include "tools/rngctl/doctor/examine/child.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/wait_notice.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using Limit = std::chrono::seconds;

// The child's answer; without one the answer of a child that did nothing, and a failure of the doctor.
template <typename Answer>
Answer Understand(const ChildResult& result, const std::string& subject, Limit limit,
                  std::vector<std::string>& failures) {
  if (const auto answer = result.Last<Answer>()) return *answer;
  const bool isSilent = result.isSilent && !result.HasExited(kDone);
  failures.push_back("The examination of " + subject + " " +
                     (isSilent ? DescribeEnd(result, limit) : "gave no usable answer") + ".");
  return {};
}

}  // namespace

ChildResult Ask(const DoctorQuestion& question, const std::string& waitedFor, Limit limit,
                const std::string& libraryPath) {
  const WaitNotice notice("Waiting for " + waitedFor + ", at most " +
                          std::to_string(limit.count()) + " s");
  return RunChild({kDoctorChildCommand, Encode(question), limit, LimitOf::kLife, libraryPath});
}

SearchOrder FindSearch(Limit limit, std::vector<std::string>& failures) {
  const std::string given = fs::absolute(FindLibrary()).parent_path();
  const ChildResult result =
      Ask({DoctorSubject::kSearchOrder, "", given}, "the search order", limit, given);
  return FindSearchOrder(
      Understand<SearchAnswer>(result, "the search order", limit, failures).systemDirectories);
}

SettingsReport FindSettings(Limit limit, const SearchOrder& search,
                            std::vector<std::string>& failures) {
  const ChildResult result =
      Ask({DoctorSubject::kSettings}, "the settings", limit, AsLibraryPath(search));
  const auto answer = Understand<SettingsAnswer>(result, "the settings", limit, failures);
  SettingsReport report{answer.file,       answer.exists,    answer.readingFault,
                        answer.isWritable, answer.service,   "",
                        answer.type,       answer.hardwareId};
  if (!answer.isDone || !result.HasExited(kDone)) {
    report.problem =
        (answer.file.empty() ? "the known-path service " : "the process that reads it ") +
        DescribeEnd(result, limit);
  } else if (!answer.isKnown) {
    report.problem = "the known-path service names no directory";
  }
  return report;
}

DisplayReport FindDisplay(Limit limit, const SearchOrder& search,
                          std::vector<std::string>& failures) {
  const ChildResult result =
      Ask({DoctorSubject::kDisplay}, "the X display", limit, AsLibraryPath(search));
  const auto answer = Understand<DisplayAnswer>(result, "the X display", limit, failures);
  if (answer.isDone && result.HasExited(kDone)) {
    return {answer.isFound, false, answer.reason, answer.fix};
  }
  return {false, true, "the process that probes for it " + DescribeEnd(result, limit),
          "Fix DISPLAY, the X server or libX11.so.6; until then every program that starts the "
          "library fails the same way."};
}
