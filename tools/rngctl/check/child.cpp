#include "tools/rngctl/check/child.h"

#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/check/transcript.h"
#include "tools/rngctl/process/child.h"

#include <unistd.h>

namespace {

Finding Make(PluginCheck check, WatchedPlugin& plugin) {
  try {
    return check(plugin);
  } catch (const EarlyEnd& end) {
    return {end.outcome, end.what(), end.fix};
  }
}

void RecordCall(LifecycleFunction function) {
  Record([function](Transcript& transcript) {
    transcript.lifecycleCalls.emplace(function, transcript.step);
  });
}

}  // namespace

void RunCheckChild(int channel) {
  const auto order = BecomeChild<CheckOrder>(channel);
  Record([](Transcript&) {});  // the parent knows from now on where the child is
  WatchLifecycleCalls(RecordCall);
  WatchedPlugin plugin(order);
  for (const Rule& rule : AllRules()) {
    const PluginCheck* const check = std::get_if<PluginCheck>(&rule.check);
    if (!check || order.rule != rule.name) continue;
    const Finding finding = Make(*check, plugin);
    Record([&finding](Transcript& transcript) { transcript.finding = finding; });
  }
  // What the plug-in has left to the exit of the process is the matter of one check alone.
  ::_exit(0);
}
