#include "tools/rngctl/check/rules/rules.h"

std::vector<Rule> AllRules() {
  std::vector<Rule> rules;
  for (const auto& group :
       {FileRules, StartRules, TextRules, AnswerRules, DrawRules, CancelRules, DrawnByteRules,
        LooksRules, ThreadRules, ReleaseRules, ProcessStateRules, CycleRules, EvidenceRules}) {
    for (const Rule& rule : group()) rules.push_back(rule);
  }
  return rules;
}
