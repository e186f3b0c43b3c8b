#include "checks.h"
#include "host.h"
#include "watched_text.h"

Finding CheckFlagsStable(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::uint32_t first = plugin.GetFlags();
  for (int i = 0; i < 100; ++i) {
    const std::uint32_t flags = plugin.GetFlags();
    Require(flags == first,
            "It answers " + std::to_string(first) + ", and then " + std::to_string(flags) +
                ": a host that chooses by capabilities finds it at one time and not at another.");
  }
  return Passed();
}

Finding CheckFlagsNotZero(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  return plugin.GetFlags() != 0 ? Passed() : Failed("GetFlags answers 0.");
}

Finding CheckSelfTest(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  return plugin.SelfTest() ? Passed() : Failed("SelfTest answers false.");
}

Finding CheckAnyDevice(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  Require(plugin.SelectDevice(nullptr), "SelectDevice answers false to null.");
  Require(plugin.SelectDevice(""), "SelectDevice answers false to the empty text.");
  return Passed();
}

Finding CheckUnknownDevice(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  if (!plugin.SelectDevice("no-such-device-\x01")) return Passed();
  return Failed("SelectDevice answers true to a text that no device bears.");
}

Finding CheckOwnDevice(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::string id = ReadGuarded(plugin, &IRngProvider::GetHardwareId);
  if (id.empty()) return NotExamined("GetHardwareId names no device");
  if (id.size() >= kRngNameSize) return NotExamined("the identifier of the device is too long");
  if (plugin.SelectDevice(id.c_str())) return Passed();
  return Failed("SelectDevice answers false to " + Quoted(id) + ", which GetHardwareId gives.");
}
