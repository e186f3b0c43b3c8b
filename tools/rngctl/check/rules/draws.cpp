#include "tools/rngctl/check/plugin/guarded_text.h"
#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/terminal/text.h"

namespace {

constexpr unsigned char kFills[] = {0x00, 0xFF, 0xA5, 0x5A};

Finding CheckEmptyDraw(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  Require(plugin.Generate(nullptr, 0), "Generate returns false for a null buffer and size 0.");
  for (const unsigned char fill : kFills) {
    GuardedBuffer buffer(64, fill, fill);
    Require(plugin.Generate(buffer.Data(), 0), "Generate returns false for size 0.");
    Require(buffer.ContainsOnly(fill) && buffer.IsIntactAround(),
            "Generate writes into the buffer when asked for 0 bytes.");
  }
  return Passed();
}

Finding CheckDrawSucceeds(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  if (!Draw(plugin, 32, 0).answer) return Failed("Generate returns false.");
  return Passed();
}

// Whether a draw ends only when it is cancelled. A slow draw ends by itself and succeeds.
bool Waits(WatchedPlugin& plugin) {
  WatchedDraw draw(plugin, 32, 0);
  if (draw.EndsWithin(plugin.Patience())) return false;
  Record([](Transcript& transcript) { transcript.drawsWait = true; });
  CancelDraws(plugin);
  return !draw.EndsWithin(3 * plugin.Patience()) || !draw.Answer();
}

Finding CheckWaitsAreFlagged(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::uint32_t flags = plugin.GetFlags();
  if ((flags & (kRngCapabilityNeedsUser | kRngCapabilityMayBlock)) != 0) return Passed();
  if (!Waits(plugin)) return Passed();
  return Failed("A draw still waits after " + InSeconds(plugin.Patience()) +
                ", and GetFlags returns " + std::to_string(flags) +
                ", without kRngCapabilityNeedsUser or kRngCapabilityMayBlock.");
}

std::string IdOf(WatchedPlugin& plugin) {
  return plugin.IsGood(Step::kGetHardwareId) ? ReadGuarded(plugin, &IRngProvider::GetHardwareId)
                                             : "";
}

// Selects the device in use, or any.
bool SelectPresent(WatchedPlugin& plugin, const std::string& id) {
  return plugin.SelectDevice(id.empty() ? nullptr : id.c_str());
}

Finding CheckRefusedDevice(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::string id = IdOf(plugin);
  if (!SelectPresent(plugin, id)) return NotExamined("SelectDevice refuses its own device");
  const bool draws = CanDraw(plugin) && DrawsReliably(plugin);
  if (IdOf(plugin) != id) return NotExamined("GetHardwareId does not always report the same");
  if (plugin.SelectDevice("no-such-device-\x01")) return NotExamined("it accepts any identifier");
  const std::string now = IdOf(plugin);
  Require(now == id, "After a refused SelectDevice, GetHardwareId reports " + Quoted(now) +
                         "; before, it was " + Quoted(id) + ".");
  if (!draws) return id.empty() ? NotExamined("it reports no device and does not draw") : Passed();
  RequireDraw(plugin, "After a refused SelectDevice, draws fail.");
  return Passed();
}

// What a host may call between two draws. Two other checks examine Cancel and a refused device.
const std::pair<Step, void (*)(WatchedPlugin&)> kOtherCalls[] = {
    {Step::kGetName, [](WatchedPlugin& plugin) { ReadGuarded(plugin, &IRngProvider::GetName); }},
    {Step::kGetDescription,
     [](WatchedPlugin& plugin) { ReadGuarded(plugin, &IRngProvider::GetDescription); }},
    {Step::kGetHardwareId,
     [](WatchedPlugin& plugin) { ReadGuarded(plugin, &IRngProvider::GetHardwareId); }},
    {Step::kGetFlags, [](WatchedPlugin& plugin) { plugin.GetFlags(); }},
    {Step::kSelectDevice, [](WatchedPlugin& plugin) { plugin.SelectDevice(nullptr); }},
    {Step::kIsAvailableInUse, [](WatchedPlugin& plugin) { plugin.IsAvailableInUse(); }},
    {Step::kSelfTest, [](WatchedPlugin& plugin) { plugin.SelfTest(); }}};

Finding CheckDrawsAfterCalls(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  if (!DrawsReliably(plugin)) return NotExamined("draws fail even when nothing else is called");
  for (const auto& [step, call] : kOtherCalls) {
    if (!plugin.IsGood(step)) continue;
    plugin.RequireTime();
    call(plugin);
    RequireDraw(plugin, "After " + InWords(step) + ", draws fail.");
  }
  plugin.Stop();
  plugin.StartAvailable();
  RequireDraw(plugin, "After a second start in the same process, draws fail.");
  return Passed();
}

}  // namespace

std::vector<Rule> DrawRules() {
  return {
      {"empty-draw", Severity::kError,
       "A draw of 0 bytes succeeds, even with a null buffer, and writes nothing",
       "Return true at once when the size is 0.", CheckEmptyDraw},
      {"draw-succeeds", Severity::kWarning, "Draws succeed while the generator is available",
       "Let IsAvailable return false while draws cannot succeed.", CheckDrawSucceeds},
      {"waits-are-flagged", Severity::kWarning, "GetFlags says that draws may wait",
       "Return kRngCapabilityNeedsUser if the user takes part in a draw, otherwise "
       "kRngCapabilityMayBlock: hosts that cannot wait skip such generators.",
       CheckWaitsAreFlagged},
      {"refused-device", Severity::kError, "A refused SelectDevice keeps the earlier choice",
       "Look for the device first, and change the choice only when it is found.",
       CheckRefusedDevice},
      {"draws-after-calls", Severity::kError, "Draws still succeed after other calls",
       "Do not change or close the source in that call or in Release: later draws need it.",
       CheckDrawsAfterCalls},
  };
}
