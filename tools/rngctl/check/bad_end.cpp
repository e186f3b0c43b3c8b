#include "tools/rngctl/check/bad_end.h"

#include "tools/rngctl/check/plugin/watched_draw.h"

namespace {

constexpr int kLoaderStatus = 127;  // of a process that calls a missing function

bool HasUnusualSettings(Step step) {
  const std::set<Step> steps = {Step::kSetNullSettings, Step::kSetEmptySettings,
                                Step::kIsAvailableWithNullSettings,
                                Step::kIsAvailableWithEmptySettings};
  return steps.contains(step);
}

constexpr char kThreadFix[] =
    "Stop and join its threads in Release: one was still running when the library was closed and "
    "its code unmapped.";

// A thread that outlives its library crashes wherever the main thread happens to be.
bool IsCrashOfThread(const Transcript& transcript, const ChildResult& result) {
  return transcript.threadsAreLeft && result.end == ChildEnd::kSignalled;
}

std::string FixFor(Step step, const ChildResult& result) {
  if (result.end == ChildEnd::kTimedOut && step == Step::kCancel) return kCancelFix;
  if (result.end == ChildEnd::kTimedOut) {
    return "Make it return soon: provide the device or input that it waits for, or allow more time "
           "with --timeout.";
  }
  if (result.end == ChildEnd::kStopped) {
    return "No operation may stop the process: find the place with a debugger.";
  }
  if (step == Step::kOpening) {
    return "Static constructors must not throw or exit: move what may fail to IsAvailable, "
           "and return false there.";
  }
  if (step == Step::kClosing) {
    return "Static destructors must not throw or exit: move what may fail to Release.";
  }
  if (result.HasExited(kLoaderStatus)) {
    return "Link with the library that has the missing function: the loader terminates the process "
           "when it is called.";
  }
  if (HasUnusualSettings(step)) {
    return "Compare the settings, and what they return, with null before using them. If that is "
           "not the cause, find the place with a debugger.";
  }
  return "No operation may end the process: find the place with a debugger, for example gdb -ex "
         "\"set follow-fork-mode child\" --args rngctl read NAME -n 32.";
}

}  // namespace

Finding JudgeBadEnd(const Transcript& transcript, const ChildResult& result,
                    const std::string& how) {
  Finding finding = Failed("It " + how + " in " + InWords(transcript.step) + ".");
  const bool isCrashOfThread = IsCrashOfThread(transcript, result);
  if (transcript.isOwnStep && !isCrashOfThread) return finding;
  finding.fix = isCrashOfThread ? kThreadFix : FixFor(transcript.step, result);
  // An operation that ends the process is an error in any check. So is a factory that does not return:
  // every start of a host would wait for it. Cancel is there to end what waits.
  const bool endsProcess = result.end != ChildEnd::kTimedOut || transcript.step == Step::kFactory ||
                           transcript.step == Step::kCancel;
  if (endsProcess) finding.severity = Severity::kError;
  return finding;
}
