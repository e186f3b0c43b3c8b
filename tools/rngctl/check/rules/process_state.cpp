#include "tools/rngctl/check/plugin/use_all.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/process/state.h"

#include <dlfcn.h>

namespace {

bool IsInside(const void* function, const std::string& library) {
  Dl_info place;
  return ::dladdr(function, &place) == 0 || place.dli_fname == library;
}

// Handlers that point into the plug-in and the descriptors have checks of their own.
void LeaveOutWhatOthersCheck(const PluginFile& file, const ProcessSnapshot& before,
                             ProcessSnapshot& after) {
  after.standardStreams = before.standardStreams;
  for (auto& [signal, action] : after.actions) {
    const SignalAction& then = before.actions.at(signal);
    if (!action.place.empty() && action.handler != then.handler &&
        IsInside(action.handler, file.path)) {
      action = then;
    }
  }
}

Finding CheckProcessState(WatchedPlugin& plugin) {
  const ProcessSnapshot before = CaptureProcessState();
  if (plugin.StartWithBuiltIn()) UseAll(plugin);
  plugin.Stop();
  ProcessSnapshot after = CaptureProcessState();
  LeaveOutWhatOthersCheck(plugin.File(), before, after);
  std::string changes;
  for (const std::string& change : Compare(before, after)) {
    changes += (changes.empty() ? "It " : ", ") + change;
  }
  return changes.empty() ? Passed() : Failed(changes + ".");
}

}  // namespace

std::vector<Rule> ProcessStateRules() {
  return {
      {"process-state", Severity::kError,
       "After unloading, the state of the process is what it was before",
       "In Release, restore what the plug-in changed, or better, change nothing: signals, umask, "
       "working directory, locale, timers and environment belong to the host.",
       CheckProcessState},
  };
}
