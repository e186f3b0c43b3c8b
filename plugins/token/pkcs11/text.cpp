#include "text.h"

#include <cstdint>

namespace {

struct Character {
  std::uint32_t code;
  std::size_t size;  // 0: not UTF-8
};

// How UTF-8 encodes a character in that many bytes: the smallest code that needs them, and the first byte's high bits.
struct Form {
  std::size_t size;
  std::uint32_t smallest;
  unsigned char mask;
  unsigned char mark;
};
constexpr Form kForms[] = {
    {1, 0, 0x80, 0x00}, {2, 0x80, 0xE0, 0xC0}, {3, 0x800, 0xF0, 0xE0}, {4, 0x10000, 0xF8, 0xF0}};

Character ReadAs(const Form& form, const std::string& text, std::size_t place) {
  if (text.size() - place < form.size) return {0, 0};
  std::uint32_t code =
      static_cast<unsigned char>(text[place]) & static_cast<unsigned char>(~form.mask);
  for (std::size_t i = 1; i < form.size; ++i) {
    const auto byte = static_cast<unsigned char>(text[place + i]);
    if ((byte & 0xC0U) != 0x80) return {0, 0};
    code = code << 6 | (byte & 0x3FU);
  }
  const bool isValid =
      code >= form.smallest && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  return {code, isValid ? form.size : 0};
}

Character ReadCharacter(const std::string& text, std::size_t place) {
  for (const Form& form : kForms) {
    if ((static_cast<unsigned char>(text[place]) & form.mask) == form.mark)
      return ReadAs(form, text, place);
  }
  return {0, 0};
}

bool IsControl(std::uint32_t code) { return code < 0x20 || (code >= 0x7F && code < 0xA0); }

// Separators of lines, and what turns the order of the characters around it.
bool TurnsOrBreaksLines(std::uint32_t code) {
  return code == 0x61C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069);
}

}  // namespace

std::string Trimmed(const unsigned char* field, std::size_t size) {
  std::string text(reinterpret_cast<const char*>(field), size);
  const std::string padding(" \0", 2);
  const std::size_t first = text.find_first_not_of(padding);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(padding) - first + 1);
}

std::string Plain(const std::string& text) {
  std::string plain;
  for (std::size_t place = 0; place < text.size();) {
    const Character character = ReadCharacter(text, place);
    const bool isShown =
        character.size != 0 && !IsControl(character.code) && !TurnsOrBreaksLines(character.code);
    plain += isShown ? text.substr(place, character.size) : "?";
    place += character.size != 0 ? character.size : 1;
  }
  return plain;
}
