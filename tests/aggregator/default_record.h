#ifndef TESTS_AGGREGATOR_DEFAULT_RECORD_H
#define TESTS_AGGREGATOR_DEFAULT_RECORD_H

#include "tests/support/aggregator_library.h"
#include "tests/support/fake_settings.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

inline const std::string kSeventeen = "12345678901234567";
inline const std::string kEighteen = kSeventeen + "8";

inline DefaultRngInfo Filled(char value) {
  DefaultRngInfo info;
  std::memset(&info, value, sizeof info);
  return info;
}

/// The record with these texts and every other byte zero.
inline DefaultRngInfo Record(const std::string& type, const std::string& hardwareId = "") {
  DefaultRngInfo info = {};
  type.copy(info.type, sizeof info.type);
  hardwareId.copy(info.hardwareId, sizeof info.hardwareId);
  return info;
}

/// The bytes, for comparing whole records.
inline std::string Bytes(const DefaultRngInfo& info) {
  return std::string(reinterpret_cast<const char*>(&info), sizeof info);
}

/// A library started with settings of the case's making, and the answer of GetDefaultRng.
struct Started {
  explicit Started(std::size_t count = 0) { library.Start(&settings, count); }

  std::int32_t Ask(std::uint32_t mask) { return library.GetDefaultRng(&info, mask); }

  FakeSettings settings;
  DefaultRngInfo info = Filled('?');
  AggregatorLibrary library;
};

#endif
