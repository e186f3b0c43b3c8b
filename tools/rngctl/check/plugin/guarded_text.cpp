#include "tools/rngctl/check/plugin/guarded_text.h"

#include "tools/rngctl/check/plugin/guarded_buffer.h"

#include <algorithm>

std::string ReadGuarded(WatchedPlugin& plugin, TextOperation operation) {
  const std::int32_t size = (plugin.*operation)(nullptr);
  if (size <= 0 || size > kLargestText) return "";
  GuardedBuffer buffer(static_cast<std::size_t>(size), 0);
  const auto* const text = reinterpret_cast<char*>(buffer.Data());
  (plugin.*operation)(reinterpret_cast<char*>(buffer.Data()));
  return {text, std::find(text, text + size, '\0')};
}
