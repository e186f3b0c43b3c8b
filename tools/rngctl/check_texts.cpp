#include "checks.h"
#include "guarded_buffer.h"
#include "host.h"

#include <cctype>
#include <nlohmann/json.hpp>
#include <optional>

namespace {

using TextOperation = std::int32_t (IRngProvider::*)(char* buffer);

constexpr std::int32_t kLargestText = 1 << 20;
constexpr std::size_t kLongestName = kRngNameSize - 1;

std::string Bytes(std::int32_t count) { return std::to_string(count) + " bytes"; }

std::string ReadInto(WatchedPlugin& plugin, TextOperation operation, std::int32_t size,
                     unsigned char guard) {
  GuardedBuffer buffer(static_cast<std::size_t>(size), 0, guard);
  auto* const start = reinterpret_cast<char*>(buffer.Data());
  const std::int32_t answer = (plugin.*operation)(start);
  Require(buffer.IsIntactAround(), "It asks for " + Bytes(size) + ", then writes outside of them.");
  Require(answer == size, "It asks for " + Bytes(size) + ", then answers that there are " +
                              std::to_string(answer) + ".");
  char* const end = std::find(start, start + size, '\0');
  Require(end != start + size,
          "The text does not end inside of the " + Bytes(size) + " that it asks for.");
  return {start, end};
}

// Nothing when there is no text. Twice with other bytes around the buffer, so that writing the very
// byte that is there is noticed, too.
std::optional<std::string> ReadByProtocol(WatchedPlugin& plugin, TextOperation operation) {
  const std::int32_t size = (plugin.*operation)(nullptr);
  Require(size >= 0, "It answers with a negative size, " + std::to_string(size) + ".");
  Require(size <= kLargestText,
          "It asks for " + Bytes(size) + ", which no text of this kind needs.");
  if (size == 0) return std::nullopt;
  const std::string first = ReadInto(plugin, operation, size, 0xC3);
  const std::string second = ReadInto(plugin, operation, size, 0x3C);
  Require(first == second, "It gives " + Quoted(first) + ", and then " + Quoted(second) + ".");
  const std::int32_t later = (plugin.*operation)(nullptr);
  Require(later == size, "It asks for " + Bytes(size) + ", and later for " + Bytes(later) + ".");
  return first;
}

// For the checks of what a text says: how it is handed over has a check of its own.
std::string ReadForContent(WatchedPlugin& plugin, TextOperation operation) {
  std::optional<std::string> text;
  try {
    text = ReadByProtocol(plugin, operation);
  } catch (const EarlyEnd& end) {
    if (end.outcome != Outcome::kFailed) throw;
  }
  if (!text) throw EarlyEnd(Outcome::kNotExamined, "there is no text that can be read");
  return *text;
}

void RequireShort(const std::string& text) {
  Require(text.size() <= kLongestName,
          Quoted(text) + " has " + std::to_string(text.size()) + " characters.");
}

bool IsUtf8(const std::string& text) {
  try {
    static_cast<void>(nlohmann::json(text).dump());
    return true;
  } catch (const nlohmann::json::exception&) {
    return false;
  }
}

bool HasControlCharacter(const std::string& text) {
  return std::any_of(text.begin(), text.end(),
                     [](unsigned char c) { return std::iscntrl(c) != 0; });
}

}  // namespace

Finding CheckName(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::optional<std::string> name = ReadByProtocol(plugin, &IRngProvider::GetName);
  Require(name && !name->empty(), "It reports no name.");
  RequireShort(*name);
  return Passed();
}

Finding CheckNameInCatalogue(WatchedPlugin& plugin) {
  const std::string& kind = plugin.Subject().kind;
  if (kind.empty()) return NotExamined("the file is not in the catalogue");
  plugin.StartAvailable();
  const std::string name = ReadForContent(plugin, &IRngProvider::GetName);
  if (name.size() > kLongestName) return NotExamined("the name is too long");
  if (name == kind) return Passed();
  return Failed("It reports the name " + Quoted(name) + "; the file is the one of " + Quoted(kind) +
                ".");
}

Finding CheckDescription(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  ReadByProtocol(plugin, &IRngProvider::GetDescription);
  return Passed();
}

Finding CheckDescriptionIsALine(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::string text = ReadForContent(plugin, &IRngProvider::GetDescription);
  if (!IsUtf8(text)) return Failed("It is no UTF-8: " + Quoted(text) + ".");
  if (HasControlCharacter(text)) {
    return Failed("It has a line break or another control character: " + Quoted(text) + ".");
  }
  return Passed();
}

Finding CheckHardwareId(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const std::optional<std::string> id = ReadByProtocol(plugin, &IRngProvider::GetHardwareId);
  if (id) RequireShort(*id);
  return Passed();
}
