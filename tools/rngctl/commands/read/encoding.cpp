#include "tools/rngctl/commands/read/encoding.h"

#include <algorithm>
#include <cstdint>

namespace {

SecretBytes ToHex(const SecretBytes& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  SecretBytes text;
  text.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 0xF]);
  }
  return text;
}

SecretBytes ToBase64(const SecretBytes& bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  SecretBytes text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t start = 0; start < bytes.size(); start += 3) {
    const std::size_t size = std::min<std::size_t>(bytes.size() - start, 3);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      bits = bits << 8 | (i < size ? static_cast<unsigned char>(bytes[start + i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      text.push_back(i <= size ? kDigits[bits >> (18 - 6 * i) & 0x3F] : '=');
    }
  }
  return text;
}

}  // namespace

SecretBytes Encode(const SecretBytes& bytes, Encoding encoding) {
  switch (encoding) {
    case Encoding::kHex:
      return ToHex(bytes);
    case Encoding::kBase64:
      return ToBase64(bytes);
    default:
      return bytes;
  }
}
