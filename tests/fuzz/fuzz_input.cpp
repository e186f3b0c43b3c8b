#include "tests/fuzz/fuzz_input.h"

#include <algorithm>

namespace {

constexpr std::size_t kLeastLength = 505;
constexpr std::size_t kLongestDoubled = 4096;

bool IsBetween(char c, char first, char last) { return first <= c && c <= last; }

std::size_t LengthFor(char digit) { return kLeastLength + static_cast<unsigned char>(digit) % 16; }

std::string CaseExchanged(std::string text) {
  for (char& c : text) {
    if (IsBetween(c, 'a', 'z') || IsBetween(c, 'A', 'Z')) c = static_cast<char>(c ^ 0x20);
  }
  return text;
}

void Pad(std::string& text, std::size_t length, bool areCrsCounted) {
  std::string line = text.substr(text.rfind('\n') + 1);
  if (!areCrsCounted) std::erase(line, '\r');
  if (line.size() < length) text.append(length - line.size(), 'x');
}

}  // namespace

std::string FuzzInput::Expand(std::string_view source) const {
  std::string text;
  for (std::size_t i = 0; i < source.size(); ++i) {
    if (source[i] != '%' || i + 1 == source.size()) {
      text += source[i];
      continue;
    }
    const char code = source[++i];
    const auto length = [&] { return LengthFor(i + 1 < source.size() ? source[++i] : '0'); };
    switch (code) {
      case 'h':
        text += "[" + section + "]";
        break;
      case 'H':
        text += CaseExchanged("[" + section + "]");
        break;
      case 'k':
        text += key;
        break;
      case 'K':
        text += CaseExchanged(key);
        break;
      case 'n':
        text += '\n';
        break;
      case 'r':
        text += '\r';
        break;
      case 'c':
        text += "\r\n";
        break;
      case '0':
        text += '\0';
        break;
      case 'p':
        Pad(text, length(), true);
        break;
      case 'P':
        Pad(text, length(), false);
        break;
      case 'x':
        text.append(length(), 'x');
        break;
      case 'd':
        text += text.size() <= kLongestDoubled ? text : "";
        break;
      default:
        text += code;
    }
  }
  return text;
}

std::string_view FuzzInput::Letters() {
  const std::string_view field = rest.substr(0, rest.find('|'));
  rest.remove_prefix(std::min(rest.size(), field.size() + 1));
  return field;
}

std::uint32_t FuzzInput::Number(std::uint32_t limit) {
  std::uint32_t number = 0;
  for (const char c : Letters()) {
    if (IsBetween(c, '0', '9'))
      number = (number * 10 + static_cast<std::uint32_t>(c - '0')) % limit;
  }
  return number;
}

profile_model::Text FuzzInput::Argument() {
  const std::string_view field = Letters();
  if (field == "%-") return std::nullopt;
  const std::string text = Expand(field);
  return text.substr(0, text.find('\0'));
}

profile_model::Text FuzzInput::Section() {
  const profile_model::Text argument = Argument();
  section = argument.value_or("");
  return argument;
}

profile_model::Text FuzzInput::Key() {
  const profile_model::Text argument = Argument();
  key = argument.value_or("");
  return argument;
}

std::string FuzzInput::Content() {
  const std::string content = Expand(rest);
  rest = {};
  return content;
}
