#include "tools/rngctl/doctor/surroundings.h"

#include "tools/rngctl/doctor/examine/child.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/wait_notice.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using Limit = std::chrono::seconds;

}  // namespace

ChildResult Ask(const DoctorQuestion& question, const std::string& waitedFor, Limit limit,
                const std::string& libraryPath) {
  const WaitNotice notice("Waiting for " + waitedFor + ", at most " +
                          std::to_string(limit.count()) + " s");
  return RunChild({kDoctorChildCommand, Encode(question), limit, LimitOf::kLife, libraryPath});
}

std::string DescribeMissingAnswer(const ChildResult& result, const std::string& subject,
                                  Limit limit) {
  const bool isSilent = result.isSilent && !result.HasExited(kDone);
  return "The examination of " + subject + " " +
         (isSilent ? DescribeEnd(result, limit) : "gave no usable answer") + ".";
}

SearchOrder FindSearch(Limit limit, std::vector<std::string>& failures) {
  const std::string given = fs::absolute(FindLibrary()).parent_path();
  const ChildResult result =
      Ask({DoctorSubject::kSearchOrder, "", given}, "the search order", limit, given);
  return FindSearchOrder(
      Understand<SearchAnswer>(result, "the search order", limit, failures).systemDirectories);
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
