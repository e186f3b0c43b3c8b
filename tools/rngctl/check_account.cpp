#include "check_account.h"

#include <cctype>
#include <cstring>

namespace {

std::string DescribeSignal(int number) {
  const char* const name = ::sigabbrev_np(number);
  const char* const description = ::sigdescr_np(number);
  std::string words = description ? description : "unknown";
  words[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(words[0])));
  return (name ? name : std::to_string(number)) + " (" + words + ")";
}

void Read(const nlohmann::json& report, CheckAccount& account) {
  if (report.contains("step")) {
    account.step = report["step"];
  } else if (report.contains("avoided")) {
    account.avoided = report["avoided"];
  } else if (report.contains("hasObject")) {
    account.hasObject = true;
  } else if (report.contains("waits")) {
    account.drawsWait = true;
  } else if (report.contains("threw")) {
    account.exceptions.emplace(report["in"], report["threw"]);
  } else if (report.contains("called")) {
    account.lifecycleCalls.emplace(report["called"], account.step);
  } else if (report.contains("outcome")) {
    account.finding = {static_cast<Outcome>(report["outcome"].get<int>()), report["seen"]};
  }
}

}  // namespace

CheckAccount ReadAccount(const ChildResult& result) {
  CheckAccount account;
  for (const nlohmann::json& report : result.reports) Read(report, account);
  return account;
}

std::string DescribeBadEnd(const ChildResult& result, std::chrono::seconds limit) {
  switch (result.end) {
    case ChildEnd::kTimedOut:
      return "gave no answer in " + std::to_string(limit.count()) + " s";
    case ChildEnd::kSignalled:
      return "crashed with signal " + DescribeSignal(result.code);
    default:
      return result.code == 0 ? "" : "ended the process with status " + std::to_string(result.code);
  }
}
