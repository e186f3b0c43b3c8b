#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_STEP_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_STEP_H

#include <string>

/// What a check is doing. An operation that may end differently in different situations has a step for
/// each.
enum class Step {
  kBeginning,
  kOpening,
  kFactory,
  kSetSettings,
  kSetNullSettings,
  kSetEmptySettings,
  kIsAvailable,
  kIsAvailableWithNullSettings,
  kIsAvailableWithEmptySettings,
  kIsAvailableInUse,
  kGetName,
  kGetDescription,
  kGetHardwareId,
  kGetReport,
  kGetFlags,
  kSelectDevice,
  kGenerate,
  kGenerateNothing,
  kSelfTest,
  kCancel,
  kRelease,
  kClosing,
  kConcurrentCalls,
  kThreadExit,
  kProcessExit,
  kProcessExitWithoutRelease
};
constexpr Step LastOf(Step) { return Step::kProcessExitWithoutRelease; }

/// For people: "GetName", "the factory".
std::string InWords(Step step);

#endif
