#ifndef TOOLS_RNGCTL_CHECK_RULES_RULES_H
#define TOOLS_RNGCTL_CHECK_RULES_RULES_H

#include "tools/rngctl/check/rules/rule.h"

/// All rules, in an order in which each needs only what was checked before it.
std::vector<Rule> AllRules();

/// The groups, in that order. Each is a table at the end of its source, beside its checks.
std::vector<Rule> FileRules();
std::vector<Rule> StartRules();
std::vector<Rule> TextRules();
std::vector<Rule> AnswerRules();
std::vector<Rule> DrawRules();
std::vector<Rule> CancelRules();
std::vector<Rule> DrawnByteRules();
std::vector<Rule> LooksRules();
std::vector<Rule> ThreadRules();
std::vector<Rule> ReleaseRules();
std::vector<Rule> ProcessStateRules();
std::vector<Rule> CycleRules();
std::vector<Rule> EvidenceRules();

#endif
