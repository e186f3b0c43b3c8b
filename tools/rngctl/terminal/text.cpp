#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <cctype>

std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return std::iscntrl(c) != 0; }, '?');
  // U+0080 to U+009F are control characters, too. In UTF-8 they are C2 and the number.
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    const auto next = static_cast<unsigned char>(text[i + 1]);
    if (text[i] == '\xC2' && next >= 0x80 && next <= 0x9F) text.replace(i, 2, "?");
  }
  return text;
}

std::string Quoted(const std::string& text) { return '"' + text + '"'; }

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
