#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_TEXT_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_TEXT_H

#include "tools/rngctl/check/plugin/watched_plugin.h"

#include <cstdint>
#include <string>

using TextOperation = std::int32_t (WatchedPlugin::*)(char* buffer);

/// The largest size of a text that is read. No buffer is allocated for a larger one.
inline constexpr std::int32_t kLargestText = 1 << 20;

/// The text that an operation reports; "" for none, and for one that is too large. For checks that only need the text:
/// other checks examine its size, and whether the operation stays within its buffer.
std::string ReadGuarded(WatchedPlugin& plugin, TextOperation operation);

#endif
