#include "tools/rngctl/check/plugin/guarded_buffer.h"
#include "tools/rngctl/check/plugin/guarded_text.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/devices/device_report.h"
#include "tools/rngctl/loader/elf_facts.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

namespace {

constexpr std::size_t kLongestName = kRngNameSize - 1;

std::string Bytes(std::int32_t count) { return std::to_string(count) + " bytes"; }

std::string ReadInto(WatchedPlugin& plugin, TextOperation operation, std::int32_t size,
                     unsigned char guard) {
  GuardedBuffer buffer(static_cast<std::size_t>(size), 0, guard);
  auto* const start = reinterpret_cast<char*>(buffer.Data());
  const std::int32_t answer = (plugin.*operation)(start);
  Require(buffer.IsIntactAround(), "It asks for " + Bytes(size) + " and writes outside them.");
  Require(answer == size,
          "It asks for " + Bytes(size) + ", then returns " + std::to_string(answer) + ".");
  char* const end = std::find(start, start + size, '\0');
  Require(end != start + size,
          "The text does not end within the " + Bytes(size) + " that it asks for.");
  return {start, end};
}

// Nothing when there is no text.
std::optional<std::string> ReadOnce(WatchedPlugin& plugin, TextOperation operation,
                                    unsigned char guard) {
  const std::int32_t size = (plugin.*operation)(nullptr);
  Require(size >= 0, "It returns a negative size, " + std::to_string(size) + ".");
  Require(size <= kLargestText,
          "It asks for " + Bytes(size) + ", which no text of this kind needs.");
  if (size == 0) return std::nullopt;
  return ReadInto(plugin, operation, size, guard);
}

// The guards of the two reads differ, because a write of the guard's own byte would go unnoticed.
constexpr unsigned char kGuard = 0xC3;
constexpr unsigned char kOtherGuard = 0x3C;

std::optional<std::string> ReadByProtocol(WatchedPlugin& plugin, TextOperation operation) {
  std::optional<std::string> text = ReadOnce(plugin, operation, kGuard);
  ReadOnce(plugin, operation, kOtherGuard);
  return text;
}

// For the checks of what a text says. Another check covers the protocol.
std::string ReadForContent(WatchedPlugin& plugin, TextOperation operation) {
  try {
    return ReadByProtocol(plugin, operation).value_or("");
  } catch (const EarlyEnd& end) {
    if (end.outcome != Outcome::kFailed) throw;
  }
  throw EarlyEnd(Outcome::kNotExamined, "it reports no readable text");
}

std::string Characters(const std::string& text) {
  return Quoted(text) + " has " + std::to_string(text.size()) + " bytes";
}

bool IsUtf8(const std::string& text) {
  try {
    static_cast<void>(nlohmann::json(text).dump());
    return true;
  } catch (const nlohmann::json::exception&) {
    return false;
  }
}

bool HasControlCharacter(const std::string& text) { return !IsPlain(text); }

bool HasBlankEnd(const std::string& text) {
  const std::string blanks = " \t";
  return !text.empty() && (blanks.find(text.front()) != std::string::npos ||
                           blanks.find(text.back()) != std::string::npos);
}

// Why it cannot be shown, or stored as the default; "" if it can.
std::string FlawOf(const std::string& text) {
  if (!IsUtf8(text)) return "is not UTF-8";
  if (HasControlCharacter(text)) return "contains a line break or another control character";
  if (text.find('=') != std::string::npos)
    return "contains \"=\", so it cannot be stored as the default";
  if (HasBlankEnd(text)) return "begins or ends with a blank, which is lost when it is stored";
  return "";
}

Finding CheckName(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const auto first = ReadOnce(plugin, &IRngProvider::GetName, kGuard);
  const auto second = ReadOnce(plugin, &IRngProvider::GetName, kOtherGuard);
  if (first == second) return Passed();
  return Failed("It reports " + Quoted(first.value_or("")) + ", then " +
                Quoted(second.value_or("")) + ".");
}

Finding CheckNameLength(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::string name = ReadForContent(plugin, &IRngProvider::GetName);
  if (name.empty()) return Failed("It reports no name, so no host can ask for it.");
  if (name.size() <= kLongestName) return Passed();
  return Failed(Characters(name) + ": hosts find it, but it cannot be stored as the default.",
                "Shorten it to " + std::to_string(kLongestName) + " bytes.");
}

Finding CheckNameInCatalogue(WatchedPlugin& plugin) {
  const std::string& kind = plugin.File().kind;
  if (kind.empty()) return NotExamined("the file name is not in the catalogue");
  plugin.StartAvailable();
  const std::string name = ReadForContent(plugin, &IRngProvider::GetName);
  if (name.empty()) return NotExamined("it reports no name");
  if (name.size() > kLongestName) return NotExamined("the name is too long");
  if (name == kind) return Passed();
  return Failed("It reports the name " + Quoted(name) + "; the file belongs to " + Quoted(kind) +
                ".");
}

Finding CheckPlainTexts(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  for (const auto& [what, operation] :
       {std::pair<const char*, TextOperation>("The name ", &IRngProvider::GetName),
        {"The identifier of the device ", &IRngProvider::GetHardwareId}}) {
    const std::string text = ReadForContent(plugin, operation);
    const std::string flaw = FlawOf(text);
    Require(flaw.empty(), what + Quoted(text) + " " + flaw + ".");
  }
  return Passed();
}

Finding CheckDescription(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  ReadByProtocol(plugin, &IRngProvider::GetDescription);
  return Passed();
}

Finding CheckDescriptionIsALine(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::string text = ReadForContent(plugin, &IRngProvider::GetDescription);
  if (!IsUtf8(text)) return Failed("It is not UTF-8: " + Quoted(text) + ".");
  if (HasControlCharacter(text)) {
    return Failed("It has a line break or another control character: " + Quoted(text) + ".");
  }
  return Passed();
}

Finding CheckHardwareId(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::optional<std::string> id = ReadByProtocol(plugin, &IRngProvider::GetHardwareId);
  if (id) {
    Require(id->size() <= kLongestName, Characters(*id) + ".",
            "Shorten it to " + std::to_string(kLongestName) + " bytes.");
  }
  return Passed();
}

// A function that only a dependency defines does not count.
Finding CheckDeviceReport(WatchedPlugin& plugin) {
  if (!Exports(plugin.File().path, kReportFunction)) {
    return NotExamined("it exports no GetRngReport, which is optional");
  }
  plugin.Open();
  const bool isAvailable = plugin.Make() && plugin.StartMade();
  const std::string text = ReadByProtocol(plugin, &WatchedPlugin::GetReport).value_or("");
  Require(text.size() < kLargestReport, "The report has more than 65536 bytes.");
  const DeviceReport report = ParseDeviceReport(text);
  Require(report.fault.empty(), report.fault);
  for (const Device& device : report.devices) {
    if (!isAvailable) break;
    Require(plugin.SelectDevice(device.identifier.c_str()),
            "It reports the device " + Quoted(device.identifier) +
                ", but SelectDevice does not accept it.",
            "Report the identifiers that SelectDevice accepts.");
  }
  return Passed();
}

}  // namespace

std::vector<Rule> TextRules() {
  return {
      {"name", Severity::kError,
       "GetName follows the protocol of two calls and always reports the same name",
       "Return the size with the terminator, the same with null and with a buffer, and write at "
       "most that many bytes.",
       CheckName},
      {"name-length", Severity::kWarning, "It reports a name of at most 17 bytes",
       "Report the kind's name: hosts look the generator up by it.", CheckNameLength},
      {"name-in-catalogue", Severity::kWarning, "GetName reports the name that belongs to the file",
       "Report the kind's name: hosts look the generator up by it.", CheckNameInCatalogue},
      {"description", Severity::kError, "GetDescription follows the protocol of two calls",
       "Return the size with the terminator, the same with null and with a buffer, and write at "
       "most that many bytes.",
       CheckDescription},
      {"description-line", Severity::kWarning, "The description is one line of UTF-8",
       "Leave out line breaks and control characters, and encode it as UTF-8.",
       CheckDescriptionIsALine},
      {"hardware-id", Severity::kError,
       "GetHardwareId follows the protocol of two calls; at most 17 bytes",
       "Return 0 when there is no device, otherwise the size with the terminator; write at most "
       "that many bytes.",
       CheckHardwareId},
      {"plain-texts", Severity::kWarning,
       "The name and the identifier of the device can be shown and stored",
       "Use letters, digits and hyphens: control characters disturb terminals, and the "
       "settings file cannot hold \"=\" or blanks at the ends.",
       CheckPlainTexts},
      {"device-report", Severity::kError,
       "GetRngReport, if there is one, follows the protocol of two calls and the format of its "
       "lines",
       "Report lines of \"device<TAB>identifier<TAB>text\" and \"problem<TAB>text\", and "
       "write what the call with null announced; provider.h has the details.",
       CheckDeviceReport},
  };
}
