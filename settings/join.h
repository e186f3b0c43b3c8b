#ifndef SETTINGS_JOIN_H
#define SETTINGS_JOIN_H

#include <string>
#include <string_view>

/// `begin` and `end` in one string, by a single allocation.
inline std::string Join(std::string_view begin, std::string_view end) {
  std::string whole(begin.size() + end.size(), '\0');
  begin.copy(whole.data(), begin.size());
  end.copy(whole.data() + begin.size(), end.size());
  return whole;
}

#endif
