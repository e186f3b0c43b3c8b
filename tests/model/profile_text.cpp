#include "tests/model/profile_text.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

// The lines without their LF; what follows the last LF is the last element, perhaps empty.
Lines Split(const std::string& text) {
  Lines lines(1);
  for (const char c : text) {
    if (c == '\n') {
      lines.emplace_back();
    } else {
      lines.back() += c;
    }
  }
  return lines;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string Trim(const std::string& text) {
  constexpr char kBlanks[] = " \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

std::string ValueIn(const std::string& file, const std::string& key) {
  bool isInside = false;
  for (const std::string& line : Split(file)) {
    if (!isInside) {
      isInside = Lower(line).starts_with("[devices]");
    } else if (Lower(line).starts_with(Lower(key))) {
      const std::size_t equals = line.rfind('=');
      return equals == std::string::npos ? "" : Trim(line.substr(equals + 1));
    }
  }
  return "";
}

std::string FileWith(const std::optional<std::string>& file, const std::string& key,
                     const std::string& value) {
  const std::string entry = key + "=" + value;
  if (!file) return "[Devices]\n" + entry + "\n";
  std::string kept = *file;
  kept.erase(std::remove(kept.begin(), kept.end(), '\r'), kept.end());
  Lines lines = Split(kept);
  lines.pop_back();
  const auto header = std::find(lines.begin(), lines.end(), "[Devices]");
  if (header == lines.end()) {
    lines.insert(lines.end(), {"", "[Devices]", entry});
  } else {
    const auto place = std::find_if(header + 1, lines.end(), [&key](const std::string& line) {
      return line.empty() || line.starts_with(key);
    });
    if (place == lines.end() || place->empty()) {
      lines.insert(place, entry);
    } else {
      *place = entry;
    }
  }
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}
