#ifndef TOOLS_RNGCTL_CHECK_TRANSCRIPT_H
#define TOOLS_RNGCTL_CHECK_TRANSCRIPT_H

#include "tools/rngctl/check/finding.h"
#include "tools/rngctl/check/plugin/plugin_file.h"
#include "tools/rngctl/check/plugin/step.h"
#include "tools/rngctl/process/lifecycle_calls.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>

/// The calls that may have used up the source of a plug-in.
struct SourceCalls {
  std::map<std::uint64_t, std::uint64_t> draws = {};  ///< how many, by size
  std::uint64_t selfTests = 0;
};
RNGCTL_MESSAGE(SourceCalls, draws, selfTests)

/// What the child of one check is asked.
struct CheckOrder {
  std::string rule;  ///< the name of the check
  PluginFile plugin;
  int seconds;                               ///< for each call
  std::set<Step> badSteps;                   ///< known to end the process or to throw
  bool drawsWait;                            ///< draws are known to wait for a user or a device
  std::optional<SourceCalls> repeated = {};  ///< to make these calls alone, instead of the check
  std::string runKey;                        ///< 16 random bytes, the same in all orders of a run
  std::string earlierBlocks = {};            ///< what an earlier process of this check sent
};
RNGCTL_MESSAGE(CheckOrder, rule, plugin, seconds, badSteps, drawsWait, repeated, runKey,
               earlierBlocks)

/// What that child has done and found so far.
struct Transcript {
  Step step = Step::kBeginning;      ///< the last one
  bool isOwnStep = false;            ///< the check is about that step
  std::set<Step> steps = {};         ///< all
  std::optional<Step> avoided = {};  ///< the known bad step at which it stopped
  std::optional<Finding> finding = {};
  std::optional<SourceCalls> inDoubt = {};  ///< the fault counts only if these calls succeed alone
  bool drawsWait = false;                   ///< a draw waits for a user or a device
  bool threadsAreLeft = false;  ///< when it was closed, threads were running that were not before
  std::map<Step, std::string> exceptions = {};            ///< what was thrown, by step
  std::map<LifecycleFunction, Step> lifecycleCalls = {};  ///< the step, by function
  /// Hashes of what it drew. If there are any and it found no fault, the check is made again in another
  /// process, which compares its draws with them.
  std::string blocks = {};
};
RNGCTL_MESSAGE(Transcript, step, isOwnStep, steps, avoided, finding, inDoubt, drawsWait,
               threadsAreLeft, exceptions, lifecycleCalls, blocks)

/// In a child: changes its transcript and sends it. Any thread.
void Record(const std::function<void(Transcript&)>& change);

#endif
