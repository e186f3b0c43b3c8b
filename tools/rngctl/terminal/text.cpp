#include "tools/rngctl/terminal/text.h"

#include <algorithm>

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD, for what is not UTF-8

unsigned ByteAt(const std::string& text, std::size_t place) {
  return place < text.size() ? static_cast<unsigned char>(text[place]) : 0;
}

// The bytes of the UTF-8 character there, 0 where there is none.
std::size_t SizeOfCharacter(const std::string& text, std::size_t place) {
  const unsigned first = ByteAt(text, place);
  if (first < 0x80) return 1;
  const std::size_t size = first >= 0xC2 && first < 0xE0   ? 2
                           : first >= 0xE0 && first < 0xF0 ? 3
                           : first >= 0xF0 && first < 0xF5 ? 4
                                                           : 0;
  for (std::size_t i = 1; i < size; ++i) {
    if ((ByteAt(text, place + i) & 0xC0U) != 0x80) return 0;
  }
  return size;
}

// U+0000 to U+001F, U+007F, and U+0080 to U+009F, which are C2 and the number.
bool IsControl(const std::string& text, std::size_t place) {
  const unsigned first = ByteAt(text, place);
  return first < 0x20 || first == 0x7F || (first == 0xC2 && ByteAt(text, place + 1) < 0xA0);
}

}  // namespace

std::string Printable(const std::string& text) {
  std::string printable;
  for (std::size_t place = 0; place < text.size();) {
    const std::size_t size = SizeOfCharacter(text, place);
    if (size == 0) {
      printable += kReplacement;
    } else if (IsControl(text, place)) {
      printable += '?';
    } else {
      printable.append(text, place, size);
    }
    place += std::max<std::size_t>(size, 1);
  }
  return printable;
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
