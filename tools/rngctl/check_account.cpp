#include "check_account.h"

#include "watched_plugin.h"

namespace {

constexpr int kLoaderStatus = 127;  // when a function is missing

void Read(const nlohmann::json& report, CheckAccount& account) {
  if (report.contains("step")) {
    account.step = report["step"];
    account.steps.insert(account.step);
    account.isInOwnStep = report.contains("isOwn");
  } else if (report.contains("avoided")) {
    account.avoided = report["avoided"];
  } else if (report.contains("waits")) {
    account.drawsWait = true;
  } else if (report.contains("threw")) {
    account.exceptions.emplace(report["in"], report["threw"]);
  } else if (report.contains("called")) {
    account.lifecycleCalls.emplace(report["called"], account.step);
  } else if (report.contains("outcome")) {
    account.finding = {static_cast<Outcome>(report["outcome"].get<int>()), report["seen"],
                       report["mend"]};
  }
}

std::string MendEnd(const std::string& step, const ChildResult& result) {
  if (result.end == ChildEnd::kTimedOut) {
    return "Let it return soon: feed or attach the device that it waits for, or give more "
           "time with --timeout.";
  }
  if (step == kOpening) {
    return "Let no static constructor throw or end the process: do what may fail in "
           "IsAvailable, and answer false.";
  }
  if (step == kClosing) {
    return "Let no static destructor throw or end the process: do what may fail in Release.";
  }
  if (result.end == ChildEnd::kExited && result.code == kLoaderStatus) {
    return "Link with the library that has the missing function: the loader ends the process "
           "when it is called.";
  }
  if (step.ends_with(" settings")) {
    return "Compare the settings, and what they answer, with null before using them. If it is not "
           "that, find the place with a debugger.";
  }
  return "No operation may end the process: find the place with a debugger, for instance with gdb "
         "--args rngctl read NAME -n 32.";
}

}  // namespace

CheckAccount ReadAccount(const ChildResult& result) {
  CheckAccount account;
  for (const nlohmann::json& report : result.reports) Read(report, account);
  return account;
}

std::string DescribeBadEnd(const ChildResult& result, std::chrono::seconds limit) {
  if (result.end == ChildEnd::kExited && result.code == 0) return "";
  return (result.end == ChildEnd::kTimedOut ? "gave " : "") + EndInWords(result, limit);
}

Finding JudgeBadEnd(const CheckAccount& account, const ChildResult& result,
                    const std::string& how) {
  Finding finding = Failed("It " + how + " in " + account.step + ".");
  if (account.isInOwnStep) return finding;
  finding.mend = MendEnd(account.step, result);
  // Every start of a host waits where a factory does, even for what the check takes easily.
  finding.isGraver = result.end != ChildEnd::kTimedOut || account.step == kFactory;
  return finding;
}
