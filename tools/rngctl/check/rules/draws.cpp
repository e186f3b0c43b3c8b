#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"

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

}  // namespace

std::vector<Rule> DrawRules() {
  return {
      {"empty-draw", Severity::kError,
       "A draw of 0 bytes succeeds, even with a null buffer, and writes nothing",
       "Return true at once when the size is 0.", CheckEmptyDraw},
      {"draw-succeeds", Severity::kWarning, "Draws succeed while the generator is available",
       "Let IsAvailable return false while draws cannot succeed.", CheckDrawSucceeds},
  };
}
