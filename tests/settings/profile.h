#ifndef TESTS_SETTINGS_PROFILE_H
#define TESTS_SETTINGS_PROFILE_H

#include "settings/profile_file.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

/// The profile file of a case, written and read.

inline std::string ProfilePath() { return TreePath("profile.ini"); }
inline std::string TemporaryPath() { return TreePath("profile.ini.tmp"); }

inline std::string Times(std::size_t count, char c) { return std::string(count, c); }

/// What the file holds after the writing; whatever the case, nothing else is left.
inline std::string Rewrite(const std::string& section, const std::string& key, const char* value) {
  EXPECT_EQ(1, WriteProfileString(section.c_str(), key.c_str(), value, ProfilePath().c_str()));
  EXPECT_FALSE(std::filesystem::exists(TemporaryPath()));
  return ReadFile(ProfilePath());
}

/// What becomes of a file of that content when "key" in "sec" is set to "new".
inline std::string Written(const std::string& content) {
  WriteFile(ProfilePath(), content);
  return Rewrite("sec", "key", "new");
}

/// "key" in "sec", "default" when nothing is found.
inline std::string ReadBack() {
  char buffer[1024] = {};
  ReadProfileString("sec", "key", "default", buffer, sizeof buffer, ProfilePath().c_str());
  return buffer;
}

#endif
