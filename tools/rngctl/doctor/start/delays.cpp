#include "tools/rngctl/doctor/start/delays.h"

#include "tools/rngctl/doctor/start/started_library.h"

#include <algorithm>
#include <cstdio>

namespace {

// A user notices a program that takes longer to start.
constexpr double kSlowStart = 0.5;

// A part that is named beside the longest one.
constexpr double kLongPart = 0.2;

std::string InSeconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f s", seconds);
  return text;
}

std::string NameOf(const StartPart& part) {
  return part.kind.empty() ? "the search for the X display" : LibraryFileOf(part.kind);
}

}  // namespace

std::string DescribeSlowness(const StartAnswer& answer) {
  std::vector<StartPart> parts = answer.parts;
  if (!answer.seconds || *answer.seconds <= kSlowStart || parts.empty()) return "";
  std::stable_sort(parts.begin(), parts.end(), [](const StartPart& one, const StartPart& other) {
    return one.seconds > other.seconds;
  });
  std::string named;
  for (const StartPart& part : parts) {
    if (!named.empty() && part.seconds < kLongPart) break;
    named += (named.empty() ? "" : ", ") + NameOf(part) + " takes " + InSeconds(part.seconds);
  }
  return "Every program that starts the library waits " + InSeconds(*answer.seconds) + ": " +
         named + ". Remove what you do not use, or ask its vendor for a faster version.";
}
