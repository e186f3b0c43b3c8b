#include "tools/rngctl/terminal/likeness.h"

#include <algorithm>

namespace {

// A longer text resembles no name, and comparing it would take long.
constexpr std::size_t kLongest = 64;

std::string InLowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;  // in no locale
  });
  return text;
}

// How many letters must be inserted, removed, replaced or swapped with their neighbour.
std::size_t Distance(const std::string& from, const std::string& to) {
  std::vector<std::vector<std::size_t>> cost(from.size() + 1,
                                             std::vector<std::size_t>(to.size() + 1));
  for (std::size_t i = 0; i <= from.size(); ++i) {
    for (std::size_t j = 0; j <= to.size(); ++j) {
      cost[i][j] = std::max(i, j);
      if (i == 0 || j == 0) continue;
      const std::size_t replaced = cost[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, replaced});
      const bool areSwapped =
          i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (areSwapped) cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
    }
  }
  return cost[from.size()][to.size()];
}

std::size_t MostDifferences(const std::string& name) {
  if (name.size() < 3) return 0;
  return name.size() < 6 ? 1 : 2;
}

}  // namespace

std::string FindLikeness(const std::string& text, const std::vector<std::string>& known) {
  std::string closest;
  if (text.size() > kLongest) return closest;
  std::size_t least = kLongest;
  for (const std::string& name : known) {
    const std::size_t distance = Distance(InLowerCase(text), InLowerCase(name));
    if (distance > MostDifferences(name) || distance >= least) continue;
    least = distance;
    closest = name;
  }
  return closest;
}
