#include "tools/rngctl/check/examination.h"

#include "tools/rngctl/check/bad_end.h"
#include "tools/rngctl/check/child.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"
#include "tools/rngctl/terminal/wait_notice.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/random.h>

namespace {

// A request is written before anybody reads it, so it must fit into a socket.
constexpr std::size_t kMostBlocks = 32768;

Finding InternalError() {
  Finding finding =
      Failed("Internal error: the check gave no usable answer.",
             "Make sure that the plug-in writes only to descriptors of its own. If it "
             "does, report this as a bug of rngctl.");
  finding.severity = Severity::kError;
  return finding;
}

}  // namespace

std::string Examination::MakeRunKey() {
  std::string key(16, '\0');
  if (::getrandom(key.data(), key.size(), 0) == static_cast<ssize_t>(key.size())) return key;
  throw Refusal(kNegativeAnswer, std::string("Cannot get random bytes from the system: ") +
                                     std::strerror(errno) + ".");
}

CheckReport Examination::Run(const std::set<std::string>& chosen) {
  const std::vector<Rule> rules = AllRules();
  const auto isChosen = [&chosen](const Rule& rule) {
    return chosen.empty() || chosen.contains(rule.name);
  };
  const bool needsEvidence = std::any_of(rules.begin(), rules.end(), [&](const Rule& rule) {
    return isChosen(rule) && std::holds_alternative<EvidenceCheck>(rule.check);
  });
  for (const Rule& rule : rules) {
    const bool givesEvidence = std::holds_alternative<PluginCheck>(rule.check);
    if (!isChosen(rule) && !(needsEvidence && givesEvidence)) continue;
    const CheckResult result = Examine(rule);
    if (isChosen(rule)) report.checks.push_back(result);
  }
  return report;
}

CheckResult Examination::Examine(const Rule& rule) {
  const Finding finding = MakeCheck(rule);
  return {rule.name,       rule.sentence, finding.severity.value_or(rule.severity),
          finding.outcome, finding.found, finding.fix.empty() ? rule.fix : finding.fix};
}

Finding Examination::MakeCheck(const Rule& rule) {
  if (const auto* const check = std::get_if<FileCheck>(&rule.check)) return (*check)(subject);
  if (const auto* const check = std::get_if<EvidenceCheck>(&rule.check)) return (*check)(evidence);
  return ExamineInChild(rule);
}

CheckOrder Examination::OrderFor(const Rule& rule) const {
  CheckOrder order{rule.name, subject.plugin, static_cast<int>(limit.count()), {}, drawsWait,
                   {},        runKey};
  for (const auto& bad : evidence.badSteps) order.badSteps.insert(bad.first);
  return order;
}

ChildResult Examination::Run(const CheckOrder& request) {
  WaitNotice notice("Checking " + request.rule + " ...");
  ChildOrder order{kCheckChildCommand, Encode(request), limit, LimitOf::kSilence, "", true};
  order.whileItWaits = [&notice](const std::string& text) { notice.PrintAbove(text); };
  ChildResult result = RunChild(order);
  RememberOutput(result, request.rule);
  return result;
}

// A draw failed after something else was called. A source that ends would fail without that, too.
Finding Examination::Confirm(const Rule& rule, const Finding& fault, const SourceCalls& inDoubt) {
  CheckOrder order = OrderFor(rule);
  order.repeated = inDoubt;
  const ChildResult result = Run(order);
  const auto transcript = result.Last<Transcript>();
  if (!result.HasExited(0) || !transcript || !transcript->finding) {
    return NotExamined("the draws, repeated alone in a fresh process, did not return");
  }
  if (transcript->finding->outcome == Outcome::kPassed) return fault;
  if (transcript->finding->outcome == Outcome::kNotExamined) return *transcript->finding;
  return NotExamined("the source ran out: the same draws fail alone in a fresh process, too");
}

Finding Examination::ExamineInChild(const Rule& rule, const std::string& earlierBlocks) {
  CheckOrder order = OrderFor(rule);
  order.earlierBlocks = earlierBlocks;
  const ChildResult result = Run(order);
  if (result.isSilent && !result.HasExited(0)) {
    return JudgeBadEnd({}, result, DescribeEnd(result, limit));
  }
  const auto transcript = result.Last<Transcript>();
  if (!transcript) return InternalError();
  Remember(*transcript);
  if (transcript->avoided) return NotExamined(evidence.badSteps.at(*transcript->avoided));
  if (result.HasExited(0) && transcript->finding) {
    const bool isContinued = transcript->finding->outcome == Outcome::kPassed &&
                             !transcript->blocks.empty() && earlierBlocks.empty();
    if (isContinued) return ExamineInChild(rule, transcript->blocks.substr(0, kMostBlocks));
    return transcript->inDoubt ? Confirm(rule, *transcript->finding, *transcript->inDoubt)
                               : *transcript->finding;
  }
  const std::string how = DescribeEnd(result, limit);
  evidence.badSteps.emplace(transcript->step,
                            InWords(transcript->step) + " " + how + " in the check " + rule.name);
  return JudgeBadEnd(*transcript, result, how);
}

void Examination::Remember(const Transcript& transcript) {
  drawsWait = drawsWait || transcript.drawsWait;
  evidence.stepsTaken.insert(transcript.steps.begin(), transcript.steps.end());
  evidence.exceptions.insert(transcript.exceptions.begin(), transcript.exceptions.end());
  evidence.lifecycleCalls.insert(transcript.lifecycleCalls.begin(),
                                 transcript.lifecycleCalls.end());
  for (const auto& thrown : transcript.exceptions) {
    evidence.badSteps.emplace(thrown.first, InWords(thrown.first) + " throws an exception");
  }
}

// One line is enough to recognise the output; the report shows all.
void Examination::RememberOutput(const ChildResult& result, const std::string& rule) {
  report.AddOutput(rule, false, result.output);
  report.AddOutput(rule, true, result.errors);
  const std::vector<PrintedLine>& lines = result.output.Lines();
  if (lines.empty() || !evidence.output.empty()) return;
  constexpr std::size_t kShown = 60;
  evidence.output = "During the check " + rule + " it prints " +
                    Quoted(lines.front().text.substr(0, kShown)) + ".";
}
