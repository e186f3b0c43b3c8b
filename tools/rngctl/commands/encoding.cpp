#include "tools/rngctl/commands/encoding.h"

#include <cstdint>

namespace {

std::string ToHex(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

std::string ToBase64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t start = 0; start < bytes.size(); start += 3) {
    const std::string_view group = bytes.substr(start, 3);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      text += i <= group.size() ? kDigits[bits >> (18 - 6 * i) & 0x3F] : '=';
    }
  }
  return text;
}

}  // namespace

std::string Encode(std::string_view bytes, Encoding encoding) {
  switch (encoding) {
    case Encoding::kHex:
      return ToHex(bytes);
    case Encoding::kBase64:
      return ToBase64(bytes);
    default:
      return std::string(bytes);
  }
}
