#include "tools/rngctl/check/child.h"

#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/check/transcript.h"
#include "tools/rngctl/process/child.h"

#include <atomic>
#include <system_error>
#include <unistd.h>

namespace {

// What the plug-in throws ends in the watched call. So this is about rngctl.
std::string WhatIsLacking(const std::system_error& error) {
  if (error.code() != std::errc::resource_unavailable_try_again) {
    return std::string("rngctl itself failed: ") + error.what();
  }
  return "rngctl itself cannot start a thread; allow more processes (ulimit -u) or more "
         "memory (ulimit -v)";
}

Finding Make(PluginCheck check, WatchedPlugin& plugin, const CheckOrder& order) {
  try {
    return order.repeated ? Repeat(plugin, *order.repeated) : check(plugin);
  } catch (const EarlyEnd& end) {
    return {end.outcome, end.what(), end.fix, end.severity};
  } catch (const std::system_error& error) {
    return NotExamined(WhatIsLacking(error));
  }
}

std::atomic<bool> g_hasCalled[] = {false, false};  // by function

// The first call of each: a plug-in may call in a loop, and must not keep itself alive by that.
void RecordCall(LifecycleFunction function) {
  if (g_hasCalled[static_cast<std::size_t>(function)].exchange(true)) return;
  Record([function](Transcript& transcript) {
    transcript.lifecycleCalls.emplace(function, transcript.step);
  });
}

}  // namespace

void RunCheckChild(int channel) {
  const auto order = BecomeChild<CheckOrder>(channel);
  WatchLifecycleCalls(RecordCall);
  WatchedPlugin plugin(order);
  for (const Rule& rule : AllRules()) {
    const PluginCheck* const check = std::get_if<PluginCheck>(&rule.check);
    if (!check || order.rule != rule.name) continue;
    const Finding finding = Make(*check, plugin, order);
    Record([&finding](Transcript& transcript) { transcript.finding = finding; });
  }
  // Do not run what the plug-in has left for the exit of the process: other checks examine that.
  ::_exit(0);
}
