#include "tools/rngctl/check/plugin/use_all.h"

#include "tools/rngctl/check/plugin/guarded_text.h"
#include "tools/rngctl/check/plugin/watched_draw.h"

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

// The second draw is made in this thread.
void DrawTwice(WatchedPlugin& plugin) {
  if (!CanDraw(plugin) || !DrawsAlone(plugin)) return;
  GuardedBuffer buffer(32, 0);
  plugin.Generate(buffer.Data(), buffer.Size());
}

}  // namespace

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
