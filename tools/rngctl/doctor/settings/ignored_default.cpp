#include "tools/rngctl/doctor/settings/ignored_default.h"

#include "tools/rngctl/terminal/likeness.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <sstream>
#include <strings.h>
#include <vector>

namespace {

constexpr char kSection[] = "Devices";
constexpr char kHeader[] = "[Devices]";
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
constexpr char kNoBreakSpace[] = "\xC2\xA0";

using Lines = std::vector<std::string>;
using Place = std::optional<std::size_t>;  // an index of a line

std::string Trimmed(const std::string& text) {
  constexpr char kBlanks[] = " \t\r\v\f";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

// What a person sees of the line.
std::string Visible(const std::string& line) {
  std::string text = Trimmed(line);
  for (const std::string unseen : {kByteOrderMark, kNoBreakSpace}) {
    if (text.starts_with(unseen)) return Visible(text.substr(unseen.size()));
  }
  return text;
}

// Ignores case, as the library does.
bool BeginsWith(const std::string& line, const std::string& prefix) {
  return ::strncasecmp(line.c_str(), prefix.c_str(), prefix.size()) == 0;
}

// Another first letter may have been put there to disable the line.
bool IsLike(const std::string& text, const std::string& known) {
  return BeginsWith(text, known.substr(0, 1)) && !FindLikeness(text, {known}).empty();
}

struct Setting {
  std::string name;
  std::string value;
};

// Also accepts a colon or a blank instead of "=".
Setting ParseSetting(const std::string& line) {
  const std::string text = Visible(line);
  const std::size_t end = text.find_first_of("=: \t");
  if (end == std::string::npos) return {text, ""};
  const std::string rest = Trimmed(text.substr(end));
  const bool isSeparated = rest.starts_with('=') || rest.starts_with(':');
  return {text.substr(0, end), Trimmed(rest.substr(isSeparated ? 1 : 0))};
}

bool IsMeantToSet(const std::string& line, const std::string& key) {
  const Setting setting = ParseSetting(line);
  return !setting.value.empty() && IsLike(setting.name, key);
}

// Also a header that is commented out, because the lines below it are then meant to be disabled.
bool OpensSection(const std::string& line) {
  const std::string text = Visible(line);
  const std::size_t begin = text.find_first_not_of("#;/ \t");
  return begin != std::string::npos && text[begin] == '[';
}

std::string SectionIn(const std::string& line) {
  const std::string text = Visible(line);
  return text.starts_with('[') ? Trimmed(text.substr(1, text.find(']') - 1)) : "";
}

class Search {
 public:
  Search(const std::string& text, std::string wanted, std::string path)
      : key(std::move(wanted)), file(std::move(path)) {
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
  }

  bool HasSetting() const { return FindSetting(0).has_value(); }

  IgnoredDefault Explain() const {
    const Place header = FindBeginning(kHeader, 0);
    const Place read = header ? FindBeginning(key, *header + 1) : std::nullopt;
    if (read) return ExplainValue(*read);
    const Place inSection = header ? FindSetting(*header + 1) : std::nullopt;
    if (inSection) return ExplainName(*inSection, key, ParseSetting(lines[*inSection]).name);
    const Place outside = FindSetting(0);
    return outside ? ExplainSection(*outside, header) : IgnoredDefault{};
  }

 private:
  Place FindBeginning(const std::string& prefix, std::size_t from) const {
    for (std::size_t i = from; i < lines.size(); ++i) {
      if (BeginsWith(lines[i], prefix)) return i;
    }
    return std::nullopt;
  }

  // Skips sections with a different name, which may be intended.
  Place FindSetting(std::size_t from) const {
    for (std::size_t i = from; i < lines.size(); ++i) {
      if (!IsMeantToSet(lines[i], key)) continue;
      const Place section = FindSectionOf(i);
      if (!section || IsLike(SectionIn(lines[*section]), kSection)) return i;
    }
    return std::nullopt;
  }

  // The last line before it that opens a section.
  Place FindSectionOf(std::size_t setting) const {
    for (std::size_t i = setting; i > 0; --i) {
      if (OpensSection(lines[i - 1])) return i - 1;
    }
    return std::nullopt;
  }

  static std::string Number(std::size_t place) { return "line " + std::to_string(place + 1); }

  IgnoredDefault AtBeginning(std::size_t place, const std::string& problem,
                             const std::string& beginning) const {
    return {Number(place) + " " + problem,
            "Edit " + file + ": " + Number(place) + " must begin with " + beginning + "."};
  }

  // The library has read this line: the first one that begins with the key.
  IgnoredDefault ExplainValue(std::size_t place) const {
    const Setting setting = ParseSetting(lines[place]);
    const bool isOwn = setting.name.size() == key.size();
    const bool hasEquals = lines[place].find('=') != std::string::npos;
    if (isOwn && setting.value.empty()) return {};  // configures nothing, perhaps on purpose
    if (isOwn && !hasEquals) return AtBeginning(place, "has no \"=\" after " + key, key + "=");
    if (isOwn && setting.value.ends_with('=')) {
      return {
          Number(place) + " ends with \"=\", but the library reads the value after the last one",
          "Edit " + file + ": remove the \"=\" at the end of " + Number(place) + "."};
    }
    const Place hidden = isOwn ? std::nullopt : FindSetting(place + 1);
    if (!hidden) return {};
    return {Number(place) + " also begins with " + key + ", so " + Number(*hidden) + " is not read",
            "Edit " + file + ": move " + Number(*hidden) + " before " + Number(place) + "."};
  }

  // `name` is what the line has where the library expects `expected`.
  IgnoredDefault ExplainName(std::size_t place, const std::string& expected,
                             const std::string& name) const {
    if (!BeginsWith(name, expected)) {
      return AtBeginning(place, "has " + name + " instead of " + expected, expected);
    }
    if (lines[place].starts_with(kByteOrderMark)) {
      return {Number(place) + " has a byte-order mark before " + expected,
              "Save " + file + " as UTF-8 without a byte-order mark."};
    }
    return AtBeginning(place, "has blanks before " + expected, expected);
  }

  IgnoredDefault ExplainSection(std::size_t setting, const Place& header) const {
    const Place section = FindSectionOf(setting);
    if (section) {
      const std::string text = Visible(lines[*section]);
      const std::size_t bracket = text.find(']');
      const bool isClosed = bracket != std::string::npos;
      return ExplainName(*section, kHeader, isClosed ? text.substr(0, bracket + 1) : text);
    }
    const std::string problem = Number(setting) + " is not in the section [Devices]";
    if (!header) return {problem, "Edit " + file + ": insert the line [Devices] before it."};
    return {problem, "Edit " + file + ": move it below " + Number(*header) + "."};
  }

  const std::string key;
  const std::string file;
  Lines lines;
};

// Enough to recognise ASCII letters.
std::string FromUtf16(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
  return text.substr(2);  // without the byte-order mark
}

}  // namespace

IgnoredDefault FindIgnoredDefault(const std::string& text, const std::string& key,
                                  const std::string& file) {
  if (!text.starts_with("\xFF\xFE") && !text.starts_with("\xFE\xFF")) {
    return Search(text, key, file).Explain();
  }
  if (!Search(FromUtf16(text), key, file).HasSetting()) return {};
  return {"the file is UTF-16 text", "Save " + file + " as UTF-8 without a byte-order mark."};
}
