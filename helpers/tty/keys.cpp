#include "helpers/tty/keys.h"

#include <optional>

namespace {

// The character that the bytes encode in UTF-8; empty if they are not exactly one.
std::optional<std::uint32_t> DecodeOne(const std::string& bytes) {
  const auto first = static_cast<unsigned char>(bytes[0]);
  if (first < 0x80) return bytes.size() == 1 ? std::optional<std::uint32_t>(first) : std::nullopt;
  const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 0;
  if (size != bytes.size()) return {};
  std::uint32_t character = first & (0xFFU >> (size + 1));
  for (const char next : bytes.substr(1)) {
    const auto byte = static_cast<unsigned char>(next);
    if ((byte & 0xC0) != 0x80) return {};
    character = character << 6 | (byte & 0x3F);
  }
  return character;
}

}  // namespace

std::vector<KeyPress> SplitKeys(const std::string& bytes, std::chrono::nanoseconds time) {
  if (const auto character = DecodeOne(bytes)) return {{time, *character, true}};
  std::vector<KeyPress> presses;
  for (const char byte : bytes) {
    presses.push_back({time, static_cast<unsigned char>(byte), bytes.size() == 1});
  }
  return presses;
}
