#include "tests/fuzz/profile_model.h"

#include <algorithm>
#include <vector>

namespace profile_model {
namespace {

constexpr std::size_t kLongestSection = 509;
constexpr std::size_t kLongestPiece = 510;       // of a line, for the reader
constexpr std::size_t kLongestCopiedLine = 511;  // for the writer

using Lines = std::vector<std::string>;

std::string UpToZero(const std::string& text) { return text.substr(0, text.find('\0')); }

std::string Lower(std::string text) {
  for (char& c : text) {
    if ('A' <= c && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  }
  return text;
}

// The text of the name when it is opened for reading. A directory can be opened, too: nothing is
// read from it.
Text Open(const Folder& folder, const std::string& name) {
  if (folder.contains(name + "/")) return "";
  const auto file = folder.find(name);
  return file == folder.end() ? Text() : file->second;
}

bool CanBeCreated(const Folder& folder, const std::string& name) {
  return name.find('/') == std::string::npos && !folder.contains(name + "/");
}

// --- The reader

ReadOutcome Filled(const ReadCall& call, const std::string& text) {
  std::string bytes = text;
  bytes.resize(call.buffer->size(), '\0');
  return {static_cast<std::uint32_t>(text.size()), bytes};
}

ReadOutcome Default(const ReadCall& call) {
  if (call.defaultValue.value_or("").empty()) return {0, *call.buffer};
  return Filled(call, call.defaultValue->substr(0, call.buffer->size()));
}

// A piece keeps its LF.
Lines Pieces(const std::string& content) {
  Lines pieces;
  for (std::size_t begin = 0, end; begin < content.size(); begin = end) {
    const std::size_t lf = std::min(content.find('\n', begin), content.size() - 1);
    end = std::min(lf + 1, begin + kLongestPiece);
    pieces.push_back(UpToZero(content.substr(begin, end - begin)));
  }
  return pieces;
}

std::string Trimmed(const std::string& text) {
  constexpr char kBlanks[] = " \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// --- The writer

// What a rewrite keeps. It ends before an overlong line and before a last line without LF.
Lines CopiedLines(std::string content) {
  std::erase(content, '\r');
  Lines lines;
  std::size_t begin = 0;
  for (std::size_t lf = content.find('\n');
       lf != std::string::npos && lf - begin <= kLongestCopiedLine;
       lf = content.find('\n', begin)) {
    lines.push_back(UpToZero(content.substr(begin, lf - begin)));
    begin = lf + 1;
  }
  return lines;
}

std::string Joined(const Lines& lines) {
  std::string content;
  for (const std::string& line : lines) content += line + "\n";
  return content;
}

std::string Rewritten(const std::string& content, const std::string& header, const std::string& key,
                      const std::string& entry) {
  Lines lines = CopiedLines(content);
  const auto section = std::find(lines.begin(), lines.end(), header);
  if (section == lines.end()) {
    lines.insert(lines.end(), {"", header, entry});
    return Joined(lines);
  }
  const auto place = std::find_if(section + 1, lines.end(), [&](const std::string& line) {
    return line.empty() || line.starts_with(key);
  });
  if (place != lines.end() && !place->empty()) {
    *place = entry;
  } else {
    lines.insert(place, entry);
  }
  return Joined(lines);
}

}  // namespace

ReadOutcome Read(const Folder& folder, const ReadCall& call) {
  const ReadOutcome untouched{0, call.buffer.value_or("")};
  if (untouched.buffer.empty() || !call.name || !call.section || !call.key) return untouched;
  const Text content = Open(folder, *call.name);
  if (!content) return Default(call);
  if (call.section->size() > kLongestSection) return untouched;

  const Lines pieces = Pieces(*content);
  const auto find = [&](auto from, const std::string& prefix) {
    return std::find_if(from, pieces.end(), [&](const std::string& piece) {
      return Lower(piece).starts_with(Lower(prefix));
    });
  };
  const auto header = find(pieces.begin(), "[" + *call.section + "]");
  if (header == pieces.end()) return Default(call);
  const auto line = find(header + 1, *call.key);
  if (line == pieces.end() || line->find('=') == std::string::npos) return Default(call);
  const std::string value = Trimmed(line->substr(line->rfind('=') + 1));
  return Filled(call, value.substr(0, call.buffer->size() - 1));
}

WriteOutcome Write(const Folder& folder, const WriteCall& call) {
  if (!call.name || !call.section || !call.key) return {0, folder};
  if (call.section->size() > kLongestSection) return {0, folder};
  const std::string header = "[" + *call.section + "]";
  const std::string entry = *call.key + "=" + call.value.value_or("");

  Folder after = folder;
  const Text content = Open(folder, *call.name);
  if (!content) {
    if (!CanBeCreated(folder, *call.name)) return {0, folder};
    after[*call.name] = Joined({header, entry});
    return {1, after};
  }
  const std::string temporary = *call.name + ".tmp";
  if (!CanBeCreated(folder, temporary)) return {0, folder};
  // A directory cannot be replaced: the new content stays under the temporary name.
  const bool isReplaced = CanBeCreated(folder, *call.name);
  after.erase(temporary);
  after[isReplaced ? *call.name : temporary] = Rewritten(*content, header, *call.key, entry);
  return {1, after};
}

}  // namespace profile_model
