#ifndef TESTS_SETTINGS_DEFAULT_SETTINGS_H
#define TESTS_SETTINGS_DEFAULT_SETTINGS_H

#include "tests/support/aggregator_library.h"
#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <gtest/gtest.h>

// As the known-path service logs them: id, size, and the fourth argument.
constexpr char kAskedForSettings[] = "2:256:0";
constexpr char kAskedForData[] = "0:256:0";

constexpr int kDataDir = 0;
constexpr int kSettingsDir = 2;

inline std::string SettingsFile() { return TreePath("etc/rng.ini"); }

inline void WriteDevices(const std::string& entries) {
  WriteFile(SettingsFile(), "[Devices]\n" + entries);
}

/// The built-in settings of a library that was never started.
class DefaultSettings : public testing::Test {
 protected:
  AggregatorLibrary library;
  IRngSettings& settings = *library.GetDefaultSettings();
};

#endif
