#ifndef TESTS_AGGREGATOR_START_UP_LOG_H
#define TESTS_AGGREGATOR_START_UP_LOG_H

#include "tests/support/aggregator_library.h"
#include "tests/support/fake_settings.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// What a start-up writes into the call log, and the state that it leaves.

inline std::string Join(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : " ") + part;
  return text;
}

/// The log of `count` probes that find no display.
inline std::string Probes(std::size_t count) {
  return Join(std::vector<std::string>(count, "x11.opened x11.XOpenDisplay x11.closed"));
}

/// The start-up log of a plug-in that is kept.
inline std::string Kept(const std::string& kind) {
  return kind + ".opened " + kind + ".factory " + kind + ".SetSettings " + kind + ".IsAvailable";
}

inline std::size_t ProbesMade() { return CountCalls("x11", "opened"); }

/// The settings that the library now uses are the ones that a stored default arrives at.
inline void ExpectCurrentSettings(const AggregatorLibrary& library, FakeSettings& settings) {
  settings.type.reset();
  EXPECT_TRUE(library.SetDefaultRng("sobol", nullptr));
  EXPECT_EQ("sobol", settings.type);
}

#endif
