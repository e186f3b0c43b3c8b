#include "settings/profile_file.h"
#include "settings/profile_stream.h"

#include <cstring>
#include <string>
#include <unistd.h>

namespace {

constexpr char kTemporarySuffix[] = ".tmp";
constexpr std::size_t kBufferSize = 512;
constexpr std::size_t kLongestLine = kBufferSize - 1;

using Line = char[kBufferSize];

struct Entry {
  const char* key;
  const char* value;
};

void Put(std::FILE* to, const Entry& entry) { std::fprintf(to, "%s=%s\n", entry.key, entry.value); }

// Writes the line up to its first NUL.
void PutLine(std::FILE* to, const Line& line) { std::fprintf(to, "%s\n", line); }

// Reads a line without its CRs and its LF. Returns false at the end of the file, where text after
// the last LF is dropped, and at an over-long line. Both end the copy.
bool ReadLine(std::FILE* from, Line& line) {
  std::size_t length = 0;
  // With the stream's lock, like every call here: a host's exit and its fflush(nullptr) use all streams.
  for (int c = std::getc(from); c != EOF; c = std::getc(from)) {
    if (c == '\r') continue;
    if (c == '\n') {
      line[length] = '\0';
      return true;
    }
    if (length == kLongestLine) return false;
    line[length++] = static_cast<char>(c);
  }
  return false;
}

bool CopyThroughHeader(std::FILE* from, std::FILE* to, const char* header, Line& line) {
  while (ReadLine(from, line)) {
    const bool isHeader = std::strcmp(line, header) == 0;
    PutLine(to, line);
    if (isHeader) return true;
  }
  return false;
}

// Replaces the section's first line that begins with the key, or inserts the entry before the first
// empty line, or appends it. Returns true when there may be more to copy.
bool PlaceEntry(std::FILE* from, std::FILE* to, const Entry& entry, Line& line) {
  const std::size_t keyLength = std::strlen(entry.key);
  while (ReadLine(from, line)) {
    const bool isEmpty = line[0] == '\0';
    if (isEmpty || std::strncmp(line, entry.key, keyLength) == 0) {
      Put(to, entry);
      if (isEmpty) PutLine(to, line);
      return true;
    }
    PutLine(to, line);
  }
  Put(to, entry);
  return false;
}

void CopyRest(std::FILE* from, std::FILE* to, Line& line) {
  while (ReadLine(from, line)) PutLine(to, line);
}

void Rewrite(std::FILE* from, std::FILE* to, const char* header, const Entry& entry) {
  Line line = {};
  if (!CopyThroughHeader(from, to, header, line)) {
    std::fprintf(to, "\n%s\n", header);
    Put(to, entry);
  } else if (PlaceEntry(from, to, entry, line)) {
    CopyRest(from, to, line);
  }
}

int WriteNewFile(const char* path, const char* header, const Entry& entry) {
  const ProfileFile to(std::fopen(path, "w"));
  if (!to) return 0;
  std::fprintf(to.get(), "%s\n", header);
  Put(to.get(), entry);
  return 1;
}

}  // namespace

int WriteProfileString(const char* section, const char* key, const char* value, const char* path) {
  if (!path || !key || !section) return 0;
  const std::string temporaryPath = std::string(path) + kTemporarySuffix;
  const Entry entry{key, value ? value : ""};
  if (std::strlen(section) + 2 > kLongestLine) return 0;
  Line header = {};
  std::snprintf(header, sizeof header, "[%s]", section);
  {
    const ProfileFile from(std::fopen(path, "r"));
    if (!from) return WriteNewFile(path, header, entry);
    const ProfileFile to(std::fopen(temporaryPath.c_str(), "w"));
    if (!to) return 0;
    Rewrite(from.get(), to.get(), header, entry);
  }
  // Not checked: once the temporary file is open, the operation reports success.
  ::unlink(path);
  static_cast<void>(std::rename(temporaryPath.c_str(), path));
  return 1;
}
