#ifndef TOOLS_RNGCTL_CHECK_REPORT_H
#define TOOLS_RNGCTL_CHECK_REPORT_H

#include "tools/rngctl/channel/printed_lines.h"
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

/// A line that the plug-in printed.
struct CheckOutput {
  bool isError;  ///< on standard error
  std::string line;
  std::size_t count;
  std::vector<std::string> checks;  ///< the names of those in which it was printed
};

struct CheckReport {
  PluginFile plugin;
  std::vector<CheckResult> checks;
  std::vector<CheckOutput> output = {};  ///< each distinct line once
  std::size_t omittedLines = 0;          ///< how many lines are not among them

  void AddOutput(const std::string& check, bool isError, const PrintedLines& printed);
  std::size_t Count(Outcome outcome) const;
  std::size_t CountFailed(Severity severity) const;
};

void PrintText(const CheckReport& report);
void PrintJson(const CheckReport& report);

#endif
