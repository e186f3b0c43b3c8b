#ifndef TOOLS_RNGCTL_CHECK_RULES_RULE_H
#define TOOLS_RNGCTL_CHECK_RULES_RULE_H

#include "tools/rngctl/check/finding.h"
#include "tools/rngctl/check/plugin/watched_plugin.h"
#include "tools/rngctl/check/subject.h"

#include <map>
#include <set>
#include <string>
#include <variant>
#include <vector>

/// What the checks that ran the plug-in's code have seen in all.
struct Evidence {
  std::set<Step> stepsTaken;
  std::map<Step, std::string> badSteps;    ///< those that ended the process or threw: what happened
  std::map<Step, std::string> exceptions;  ///< what was thrown, by step
  std::map<LifecycleFunction, Step> lifecycleCalls;  ///< the step, by function
  std::string output;                                ///< what it printed first, in a sentence
};

/// A check looks at the file, runs the plug-in's code in a child, or judges what all children saw.
using FileCheck = Finding (*)(const CheckSubject& subject);
using PluginCheck = Finding (*)(WatchedPlugin& plugin);
using EvidenceCheck = Finding (*)(const Evidence& evidence);

struct Rule {
  const char* name;  ///< in kebab case; scripts depend on it
  Severity severity;
  const char* sentence;  ///< what a correct plug-in does
  const char* fix;  ///< what the author can do about a failure; empty if each failure has its own
  std::variant<FileCheck, PluginCheck, EvidenceCheck> check;
};

#endif
