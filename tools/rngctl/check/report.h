#ifndef TOOLS_RNGCTL_CHECK_REPORT_H
#define TOOLS_RNGCTL_CHECK_REPORT_H

#include "tools/rngctl/check/finding.h"
#include "tools/rngctl/check/plugin/plugin_file.h"

#include <cstddef>
#include <string>
#include <vector>

/// What `rngctl check` found: one structure for people and for scripts.

struct CheckResult {
  std::string name;      ///< the rule's
  std::string sentence;  ///< the rule: what a correct plug-in does
  Severity severity;
  Outcome outcome;
  std::string found;  ///< the fault, or why the check was not examined
  std::string fix;    ///< what the author can do about a failure
};

struct CheckReport {
  PluginFile plugin;
  std::vector<CheckResult> checks;

  std::size_t Count(Outcome outcome) const;
  std::size_t CountFailed(Severity severity) const;
};

void PrintText(const CheckReport& report);
void PrintJson(const CheckReport& report);

#endif
