// Tells administrators' tools why a draw is not possible now.

#include "plugins/interactive/kind.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

#include <rngaggregator/provider.h>

namespace {

std::string FixForHelper(const std::string& helper, int error) {
  if (error == ENOENT || error == EISDIR) return "Reinstall " + std::string(kKind.package) + '.';
  if (::access(helper.c_str(), F_OK) != 0) return "Let this user enter the directories above it.";
  return "Run: chmod 755 " + helper;
}

std::string ProblemOfHelper() {
  const std::string helper = FindHelper();
  if (helper.empty()) {
    return "The plug-in was loaded by a relative path, so it cannot find its helper program " +
           std::string(kKind.helper) + ". Use absolute paths in LD_LIBRARY_PATH.";
  }
  const int error = CheckHelper(helper);
  if (error == 0) return "";
  return "The helper program cannot be run: " + helper + ": " + std::strerror(error) + ". " +
         FixForHelper(helper, error);
}

std::string FindProblem() {
  if (HasMoreRightsThanUser()) {
    return "The program has more rights than its user (set-user-ID, set-group-ID or capabilities), "
           "so the plug-in does not ask the user. Choose another generator for it.";
  }
  const std::string helper = ProblemOfHelper();
  return helper.empty() ? kKind.problem() : helper;
}

std::string g_report;  // kept from the call without a buffer for the call with one

}  // namespace

std::int32_t GetRngReport(char* buffer) {
  if (!buffer) {
    const std::string problem = FindProblem();
    g_report = problem.empty() ? "" : "problem\t" + problem + '\n';
  }
  if (g_report.empty()) return 0;
  if (buffer) std::memcpy(buffer, g_report.c_str(), g_report.size() + 1);
  return static_cast<std::int32_t>(g_report.size() + 1);
}
