#ifndef TOOLS_RNGCTL_CHECK_LIST_H
#define TOOLS_RNGCTL_CHECK_LIST_H

#include "check_report.h"
#include "check_subject.h"
#include "watched_plugin.h"

#include <vector>

/// One check. Exactly one of the functions makes it, or none: what it finds is then gathered from all
/// that run in a child.
struct CheckRule {
  const char* name;
  Severity severity;
  const char* rule;
  const char* mend;
  Finding (*inFile)(const CheckSubject& subject) = nullptr;
  Finding (*inChild)(WatchedPlugin& plugin) = nullptr;
};

inline constexpr char kCataloguePair[] = "catalogue-pair";
inline constexpr char kNoException[] = "no-exceptions";
inline constexpr char kNoLifecycleCall[] = "no-lifecycle-calls";
inline constexpr char kNoOutput[] = "no-output";

/// All checks, in an order in which each needs only what was checked before it.
std::vector<CheckRule> AllChecks();

#endif
