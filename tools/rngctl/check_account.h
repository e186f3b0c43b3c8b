#ifndef TOOLS_RNGCTL_CHECK_ACCOUNT_H
#define TOOLS_RNGCTL_CHECK_ACCOUNT_H

#include "check_report.h"
#include "child.h"

#include <map>
#include <optional>
#include <set>

/// What the child of one check has told before its end.
struct CheckAccount {
  std::string step = "the start of the check";  ///< the last one
  std::set<std::string> steps = {};             ///< all
  std::string avoided = {};                     ///< the known bad step at which it stopped
  std::optional<Finding> finding = {};
  bool isInOwnStep = false;                                ///< the last step is the check's matter
  bool drawsWait = false;                                  ///< a draw waits for a user or a device
  std::map<std::string, std::string> exceptions = {};      ///< what was thrown, by step
  std::map<std::string, std::string> lifecycleCalls = {};  ///< the step, by function
};

CheckAccount ReadAccount(const ChildResult& result);

/// How a child that did not come to its end has ended: "crashed with signal 11 (Segmentation fault)".
/// Empty when it did.
std::string DescribeBadEnd(const ChildResult& result, std::chrono::seconds limit);

/// The fault in a child that ended so, described as `how`.
Finding JudgeBadEnd(const CheckAccount& account, const ChildResult& result, const std::string& how);

#endif
