#include "settings/profile_file.h"
#include "settings/profile_stream.h"

#include <cctype>
#include <cstring>
#include <strings.h>

namespace {

constexpr std::size_t kBufferSize = 512;
constexpr std::size_t kLongestHeader = kBufferSize - 1;
constexpr int kReadLimit = 511;  // fgets reads one character less

using Line = char[kBufferSize];

bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// Reads until a line begins with `prefix`, in any case.
bool FindLine(std::FILE* file, const char* prefix, Line& line) {
  const std::size_t length = std::strlen(prefix);
  while (std::fgets(line, kReadLimit, file)) {
    if (::strncasecmp(line, prefix, length) == 0) return true;
  }
  return false;
}

std::uint32_t CopyDefault(const char* defaultValue, char* buffer, std::uint32_t size) {
  if (!defaultValue || !*defaultValue) return 0;
  std::strncpy(buffer, defaultValue, size);  // a default of `size` characters is left unterminated
  return static_cast<std::uint32_t>(::strnlen(buffer, size));
}

std::uint32_t CopyValue(char* value, char* buffer, std::uint32_t size) {
  while (IsSpace(*value)) ++value;
  for (char* end = value + std::strlen(value); end != value && IsSpace(end[-1]);) *--end = '\0';
  std::strncpy(buffer, value, size - 1);
  buffer[size - 1] = '\0';
  return static_cast<std::uint32_t>(std::strlen(buffer));
}

}  // namespace

std::uint32_t ReadProfileString(const char* section, const char* key, const char* defaultValue,
                                char* buffer, std::uint32_t size, const char* path) {
  if (!buffer || !path || !section || !key || size == 0) return 0;
  Line line = {};
  Line header = {};
  {
    const ProfileFile file(std::fopen(path, "r"));
    if (!file) return CopyDefault(defaultValue, buffer, size);
    // Checked after opening: an over-long section yields the default only if the file is missing.
    if (std::strlen(section) + 2 > kLongestHeader) return 0;
    std::snprintf(header, sizeof header, "[%s]", section);
    // The search for the key continues through later sections, to the end of the file.
    if (!FindLine(file.get(), header, line) || !FindLine(file.get(), key, line)) {
      return CopyDefault(defaultValue, buffer, size);
    }
  }
  char* const equals = std::strrchr(line, '=');
  if (!equals) return CopyDefault(defaultValue, buffer, size);
  return CopyValue(equals + 1, buffer, size);
}
