#include "check_list.h"
#include "checks.h"
#include "child.h"
#include "commands.h"
#include "lifecycle_calls.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

namespace {

PluginUnderCheck ReadSubject(const CheckChildRequest& request, const nlohmann::json& what) {
  return {request.plugin,      request.factory,
          what.at("kind"),     std::chrono::seconds(what.at("seconds").get<int>()),
          what.at("badSteps"), what.at("drawsWait")};
}

Finding Make(const CheckRule& rule, WatchedPlugin& plugin) {
  try {
    return rule.inChild(plugin);
  } catch (const EarlyEnd& end) {
    return {end.outcome, end.what(), end.mend};
  }
}

}  // namespace

void SendFinding(const Finding& finding) {
  SendReport({{"outcome", static_cast<int>(finding.outcome)},
              {"seen", finding.seen},
              {"mend", finding.mend}});
}

void RunCheckChild(const CheckChildRequest& request) {
  BecomeChild();
  WatchLifecycleCalls([](const char* function) { SendReport({{"called", function}}); });
  const nlohmann::json what = nlohmann::json::parse(request.what);
  WatchedPlugin plugin(ReadSubject(request, what));
  for (const CheckRule& rule : AllChecks()) {
    if (rule.inChild && what.at("check") == rule.name) SendFinding(Make(rule, plugin));
  }
  // What the plug-in has left to the end of the process is the matter of one check alone.
  ::_exit(0);
}
