#include "tools/rngctl/check/plugin/guarded_text.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/devices/device_report.h"
#include "tools/rngctl/loader/elf_facts.h"
#include "tools/rngctl/terminal/text.h"

namespace {

Finding CheckFlagsStable(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::uint32_t first = plugin.GetFlags();
  for (int i = 0; i < 100; ++i) {
    const std::uint32_t flags = plugin.GetFlags();
    Require(flags == first, "It returns " + std::to_string(first) + ", then " +
                                std::to_string(flags) +
                                ": hosts that choose by capability find it only sometimes.");
  }
  return Passed();
}

Finding CheckFlagsNotZero(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  return plugin.GetFlags() != 0 ? Passed() : Failed("GetFlags returns 0.");
}

Finding CheckSelfTest(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  return plugin.SelfTest() ? Passed() : Failed("SelfTest returns false.");
}

Finding CheckAnyDevice(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  Require(plugin.SelectDevice(nullptr), "SelectDevice returns false for null.");
  Require(plugin.SelectDevice(""), "SelectDevice returns false for an empty string.");
  return Passed();
}

Finding CheckUnknownDevice(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  if (!plugin.SelectDevice("no-such-device-\x01")) return Passed();
  return Failed("SelectDevice returns true for an identifier that no device has.");
}

// Selects the first device of its report that it accepts. Some plug-ins use no device before that.
std::string SelectReported(WatchedPlugin& plugin) {
  if (!Exports(plugin.File().path, kReportFunction)) return "";
  const std::string report = ReadGuarded(plugin, &WatchedPlugin::GetReport);
  for (const Device& device : ParseDeviceReport(report).devices) {
    if (plugin.SelectDevice(device.identifier.c_str())) return device.identifier;
  }
  return "";
}

Finding CheckOwnDevice(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  std::string id = ReadGuarded(plugin, &IRngProvider::GetHardwareId);
  const std::string selected = id.empty() ? SelectReported(plugin) : "";
  if (!selected.empty()) id = ReadGuarded(plugin, &IRngProvider::GetHardwareId);
  if (id.empty()) {
    return NotExamined(
        "GetHardwareId reports no device" +
        (selected.empty() ? "" : ", even after " + Quoted(selected) + " was selected"));
  }
  if (id.size() >= kRngNameSize) return NotExamined("the identifier of the device is too long");
  if (plugin.SelectDevice(id.c_str())) return Passed();
  return Failed("SelectDevice returns false for " + Quoted(id) + ", which GetHardwareId reports.");
}

}  // namespace

std::vector<Rule> AnswerRules() {
  return {
      {"stable-flags", Severity::kWarning, "GetFlags always returns the same bits",
       "Return the capabilities of the kind, not of its current state.", CheckFlagsStable},
      {"some-flag", Severity::kWarning, "GetFlags returns at least one bit",
       "Return at least one kRngCapability bit: without one the generator is never listed.",
       CheckFlagsNotZero},
      {"self-test", Severity::kWarning, "SelfTest succeeds when the generator is available",
       "Find out why the test fails, or let IsAvailable return false.", CheckSelfTest},
      {"any-device", Severity::kError, "SelectDevice accepts null and \"\" as any device",
       "Return true for both.", CheckAnyDevice},
      {"unknown-device", Severity::kWarning, "SelectDevice rejects a device that does not exist",
       "Return false, and keep the device that was selected before.", CheckUnknownDevice},
      {"own-device", Severity::kWarning,
       "SelectDevice accepts the device that GetHardwareId reports",
       "Compare with the identifier that GetHardwareId reports: hosts store it and pass it back.",
       CheckOwnDevice},
  };
}
