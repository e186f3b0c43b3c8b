#include "check_account.h"

namespace {

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
  if (result.end == ChildEnd::kExited && result.code == 0) return "";
  return (result.end == ChildEnd::kTimedOut ? "gave " : "") + EndInWords(result, limit);
}
