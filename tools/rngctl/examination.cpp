#include "examination.h"

#include "host.h"
#include "terminal.h"

#include <algorithm>

namespace {

std::string DescribeExceptions(const std::map<std::string, std::string>& exceptions) {
  std::string text;
  for (const auto& [step, what] : exceptions) {
    text += (text.empty() ? "" : " ") + step + " throws ";
    text += (what.empty() ? "something that is no std::exception" : Quoted(what)) + ".";
  }
  return text;
}

std::string DescribeCalls(const std::map<std::string, std::string>& calls) {
  std::string text;
  for (const auto& [function, step] : calls) {
    text.append(text.empty() ? "" : " ").append(function).append(" is called in ").append(step);
    text += '.';
  }
  return text;
}

}  // namespace

CheckReport Examination::Run() {
  CheckReport report{subject.path, subject.factory, {}};
  for (const CheckRule& rule : AllChecks()) report.checks.push_back(Examine(rule));
  return report;
}

CheckResult Examination::Examine(const CheckRule& rule) {
  const Finding finding = rule.inFile    ? rule.inFile(subject)
                          : rule.inChild ? ExamineInChild(rule)
                                         : Gather(rule.name);
  // Who names another factory knows that it is not the catalogue's.
  const bool isMild = hasOwnFactory && rule.name == std::string(kCataloguePair);
  const Severity severity = finding.isGraver ? Severity::kError
                            : isMild         ? Severity::kWarning
                                             : rule.severity;
  const std::string mend = finding.mend.empty() ? rule.mend : finding.mend;
  return {rule.name, severity, rule.rule, mend, finding};
}

std::string Examination::RequestFor(const CheckRule& rule) const {
  std::vector<std::string> steps;
  for (const auto& bad : badSteps) steps.push_back(bad.first);
  const nlohmann::json request = {{"check", rule.name},
                                  {"kind", subject.kind},
                                  {"seconds", limit.count()},
                                  {"badSteps", steps},
                                  {"drawsWait", drawsWait}};
  return request.dump();
}

Finding Examination::ExamineInChild(const CheckRule& rule) {
  const WaitNotice notice("Checking " + std::string(rule.name) + " ...");
  std::vector<std::string> arguments = {"check-child", RequestFor(rule), subject.path};
  if (!subject.factory.empty()) arguments.push_back("--factory=" + subject.factory);
  const ChildResult result = RunChild(arguments, limit, "", LimitOf::kSilence);
  const CheckAccount account = ReadAccount(result);
  Remember(account);
  RememberOutput(result.printed, rule.name);
  if (!account.avoided.empty()) return NotExamined(badSteps[account.avoided]);
  const std::string badEnd = DescribeBadEnd(result, limit);
  if (badEnd.empty() && account.finding) return *account.finding;
  const std::string how = badEnd.empty() ? EndInWords(result, limit) : badEnd;
  badSteps.emplace(account.step, account.step + " " + how + " in the check " + rule.name);
  return JudgeBadEnd(account, result, how);
}

void Examination::Remember(const CheckAccount& account) {
  stepsTaken.insert(account.steps.begin(), account.steps.end());
  drawsWait = drawsWait || account.drawsWait;
  exceptions.insert(account.exceptions.begin(), account.exceptions.end());
  lifecycleCalls.insert(account.lifecycleCalls.begin(), account.lifecycleCalls.end());
  for (const auto& thrown : account.exceptions) {
    badSteps.emplace(thrown.first, thrown.first + " throws an exception");
  }
}

// A line will do to recognise it.
void Examination::RememberOutput(const std::string& printed, const std::string& check) {
  if (printed.empty() || !output.empty()) return;
  constexpr std::size_t kShown = 60;
  output = "In the check " + check + " it prints " +
           Quoted(printed.substr(0, std::min(kShown, printed.find('\n')))) + ".";
}

// What any of the children has seen.
Finding Examination::Gather(const std::string& rule) const {
  const std::string seen = rule == kNoException ? DescribeExceptions(exceptions)
                           : rule == kNoOutput  ? output
                                                : DescribeCalls(lifecycleCalls);
  if (!seen.empty()) return Failed(seen);
  const std::string unexamined = Unexamined();
  return unexamined.empty()
             ? Passed()
             : NotExamined("these were not called, or did not return: " + unexamined);
}

// What was not called, or has ended its process or thrown, may still do anything.
std::string Examination::Unexamined() const {
  std::string names;
  for (const char* step :
       {kFactory, "SetSettings", "IsAvailable", "GetName", "GetDescription", "GetHardwareId",
        "GetFlags", "SelectDevice", "Generate", "SelfTest", "Cancel", "Release"}) {
    if (stepsTaken.contains(step) && !badSteps.contains(step)) continue;
    names.append(names.empty() ? "" : ", ").append(step);
  }
  return names;
}
