#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD, for what is not UTF-8

struct Character {
  char32_t code;
  std::size_t size;  // in bytes; 0 for a byte that is not UTF-8
};

unsigned ByteAt(const std::string& text, std::size_t place) {
  return place < text.size() ? static_cast<unsigned char>(text[place]) : 0;
}

std::size_t SizeOfSequence(unsigned first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

// A character that is written with more bytes than it needs, a surrogate, or one beyond the last is not
// UTF-8.
bool IsValid(const Character& character) {
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = character.code >= 0xD800 && character.code < 0xE000;
  return character.code >= kLeast[character.size] && character.code <= 0x10FFFF && !isSurrogate;
}

Character CharacterAt(const std::string& text, std::size_t place) {
  const unsigned first = ByteAt(text, place);
  Character character = {first, SizeOfSequence(first)};
  if (character.size > 1) character.code = first & (0x7FU >> character.size);
  for (std::size_t i = 1; i < character.size; ++i) {
    const unsigned next = ByteAt(text, place + i);
    if ((next & 0xC0U) != 0x80) return {first, 0};
    character.code = character.code << 6 | (next & 0x3FU);
  }
  return IsValid(character) ? character : Character{first, 0};
}

bool IsControl(char32_t code) { return code < 0x20 || (code >= 0x7F && code < 0xA0); }

// Characters that change the order or the lines of what surrounds them, or that nobody sees. The joiners
// U+200C and U+200D are not among them: some languages and emoji need them.
bool IsDeceptive(char32_t code) {
  constexpr struct {
    char32_t first;
    char32_t last;
  } kRanges[] = {{0xAD, 0xAD},     {0x61C, 0x61C},    {0x180E, 0x180E}, {0x200B, 0x200B},
                 {0x200E, 0x200F}, {0x2028, 0x202E},  {0x2060, 0x206F}, {0xFEFF, 0xFEFF},
                 {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F}};
  return std::any_of(std::begin(kRanges), std::end(kRanges), [code](const auto& range) {
    return code >= range.first && code <= range.last;
  });
}

bool IsHarmless(char32_t code) { return !IsControl(code) && !IsDeceptive(code); }

std::string JsonEscape(char32_t code) {
  char escape[sizeof "\\uD83D\\uDE00"];
  if (code < 0x10000) {
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(code) & 0xFFFF);
  } else {
    const auto beyond = static_cast<unsigned>(code - 0x10000);
    std::snprintf(escape, sizeof escape, "\\u%04x\\u%04x", 0xD800 | (beyond >> 10 & 0x3FF),
                  0xDC00 | (beyond & 0x3FF));
  }
  return escape;
}

// The text with each character replaced by what `rewrite` returns for it.
template <typename Rewrite>
std::string Rewritten(const std::string& text, const Rewrite& rewrite) {
  std::string result;
  for (std::size_t place = 0; place < text.size();) {
    const Character character = CharacterAt(text, place);
    const std::size_t size = std::max<std::size_t>(character.size, 1);
    result += rewrite(character, text.substr(place, size));
    place += size;
  }
  return result;
}

}  // namespace

std::string Printable(const std::string& text) {
  return Rewritten(text, [](const Character& character, const std::string& bytes) {
    if (character.size == 0) return std::string(kReplacement);
    return IsHarmless(character.code) ? bytes : "?";
  });
}

std::string PrintableLines(const std::string& text) {
  std::istringstream input(text);
  std::string lines;
  for (std::string line; std::getline(input, line);) {
    if (!line.empty()) lines += Printable(line) + '\n';
  }
  return lines;
}

// Outside of strings, JSON has none of these characters except line breaks and tabs, which stay.
std::string EscapedJson(const std::string& json) {
  return Rewritten(json, [](const Character& character, const std::string& bytes) {
    const bool stays = character.size == 0 || character.code < 0x20 || IsHarmless(character.code);
    return stays ? bytes : JsonEscape(character.code);
  });
}

bool IsPlain(const std::string& text) {
  for (std::size_t place = 0; place < text.size();) {
    const Character character = CharacterAt(text, place);
    if (character.size == 0 || IsControl(character.code)) return false;
    place += character.size;
  }
  return true;
}

std::string Quoted(const std::string& text) {
  const bool isQuoted = text.size() > 1 && text.starts_with('"') && text.ends_with('"');
  return isQuoted ? text : '"' + text + '"';
}

std::string Counted(std::size_t count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::size_t CountColumns(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;  // not a continuation byte
  }));
}

std::string Padded(const std::string& text, std::size_t columns) {
  const std::size_t count = CountColumns(text);
  return count < columns ? text + std::string(columns - count, ' ') : text;
}
