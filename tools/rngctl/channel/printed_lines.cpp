#include "tools/rngctl/channel/printed_lines.h"

#include <algorithm>

namespace {

constexpr std::size_t kLongestLine = 200;
constexpr std::size_t kMostLines = 100;

}  // namespace

// A carriage return also ends a line: progress is printed over itself.
void PrintedLines::Add(const std::string& piece) {
  for (std::size_t place = 0; place < piece.size();) {
    const std::size_t end = std::min(piece.find_first_of("\r\n", place), piece.size());
    const std::size_t room = kLongestLine - rest.size();
    rest.append(piece, place, std::min(end - place, room));
    if (end < piece.size()) Finish();
    place = end + 1;
  }
}

void PrintedLines::Finish() {
  if (rest.empty()) return;
  const auto known = places.find(rest);
  if (known != places.end()) {
    ++lines[known->second].count;
  } else if (lines.size() < kMostLines) {
    places.emplace(rest, lines.size());
    lines.push_back({rest, 1});
  } else {
    ++omitted;
  }
  rest.clear();
}
