#ifndef TOOLS_RNGCTL_CHECK_EXAMINATION_H
#define TOOLS_RNGCTL_CHECK_EXAMINATION_H

#include "tools/rngctl/check/report.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/check/transcript.h"
#include "tools/rngctl/process/child.h"

/// Runs checks on one plug-in. Each check that runs the plug-in's code has its own child.
class Examination {
 public:
  Examination(CheckSubject plugin, std::chrono::seconds timeout)
      : subject(std::move(plugin)), limit(timeout), report{subject.plugin, {}} {}

  /// Runs the chosen checks, or all of them if none is chosen. A check that judges what all children
  /// saw needs the others, so they run, too, but are not reported.
  CheckReport Run(const std::set<std::string>& chosen);

 private:
  static std::string MakeRunKey();
  CheckResult Examine(const Rule& rule);
  Finding MakeCheck(const Rule& rule);
  Finding ExamineInChild(const Rule& rule, const std::string& earlierBlocks = "");
  ChildResult Run(const CheckOrder& order);
  Finding Confirm(const Rule& rule, const Finding& fault, const SourceCalls& inDoubt);
  CheckOrder OrderFor(const Rule& rule) const;
  void Remember(const Transcript& transcript);
  void RememberOutput(const ChildResult& result, const std::string& rule);

  const CheckSubject subject;
  const std::chrono::seconds limit;
  const std::string runKey = MakeRunKey();
  CheckReport report;
  Evidence evidence;
  bool drawsWait = false;
};

#endif
