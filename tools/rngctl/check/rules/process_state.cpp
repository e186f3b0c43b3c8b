#include "tools/rngctl/check/plugin/guarded_text.h"
#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/process/state.h"

#include <dlfcn.h>

namespace {

// False when it waited and had to be cancelled.
bool DrawsAlone(WatchedPlugin& plugin) {
  WatchedDraw draw(plugin, 32, 0);
  if (draw.EndsWithin(plugin.Patience())) return true;
  Record([](Transcript& transcript) { transcript.drawsWait = true; });
  CancelDraws(plugin);
  if (draw.EndsWithin(plugin.Patience())) return false;
  throw EarlyEnd(Outcome::kNotExamined, "Cancel does not end the draw");
}

// The second draw is made in this thread, whose own state is compared, too.
void DrawTwice(WatchedPlugin& plugin) {
  if (!CanDraw(plugin) || !DrawsAlone(plugin)) return;
  GuardedBuffer buffer(32, 0);
  plugin.Generate(buffer.Data(), buffer.Size());
}

// Leaves out what ends the process or throws: other checks report that.
void UseAll(WatchedPlugin& plugin) {
  for (const auto& [step, text] :
       {std::pair<Step, TextOperation>(Step::kGetName, &IRngProvider::GetName),
        {Step::kGetDescription, &IRngProvider::GetDescription},
        {Step::kGetHardwareId, &IRngProvider::GetHardwareId}}) {
    if (plugin.IsGood(step)) ReadGuarded(plugin, text);
  }
  if (plugin.IsGood(Step::kGetFlags)) plugin.GetFlags();
  if (plugin.IsGood(Step::kSelectDevice)) plugin.SelectDevice(nullptr);
  if (plugin.IsGood(Step::kSelfTest)) plugin.SelfTest();
  if (plugin.IsGood(Step::kCancel)) plugin.Cancel();
  DrawTwice(plugin);
}

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
