#ifndef TESTS_SETTINGS_READING_H
#define TESTS_SETTINGS_READING_H

#include "tests/settings/profile.h"

#include <cstdint>
#include <cstring>
#include <ostream>

inline std::string Profile(const std::string& content) {
  WriteFile(ProfilePath(), content);
  return ProfilePath();
}

struct Reading {
  std::uint32_t length;
  std::string buffer;  ///< all its bytes, at first '#', and four bytes behind it

  bool operator==(const Reading& other) const = default;
};

inline void PrintTo(const Reading& reading, std::ostream* out) {
  *out << reading.length << ' ' << testing::PrintToString(reading.buffer);
}

/// "key" in "sec", read into a buffer of `size` bytes.
inline Reading ReadInto(std::uint32_t size, const char* defaultValue, const std::string& path) {
  std::string buffer(size + 4, '#');
  const auto length =
      ReadProfileString("sec", "key", defaultValue, buffer.data(), size, path.c_str());
  return {length, buffer};
}

/// The text read from a file of that content, "default" when nothing is found.
inline std::string Read(const std::string& section, const std::string& key,
                        const std::string& content) {
  char buffer[2048];
  std::memset(buffer, '#', sizeof buffer);
  const auto length = ReadProfileString(section.c_str(), key.c_str(), "default", buffer,
                                        sizeof buffer, Profile(content).c_str());
  EXPECT_EQ(::strnlen(buffer, sizeof buffer), length) << testing::PrintToString(content);
  return std::string(buffer, length);
}

inline std::string Read(const std::string& content) { return Read("sec", "key", content); }

#endif
