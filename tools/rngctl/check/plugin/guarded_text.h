#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_TEXT_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_TEXT_H

#include "tools/rngctl/check/plugin/watched_plugin.h"

#include <cstdint>
#include <string>

using TextOperation = std::int32_t (WatchedPlugin::*)(char* buffer);

/// More bytes than any text of a plug-in needs. No buffer for a larger one is made.
inline constexpr std::int32_t kLargestText = 1 << 20;

/// The text that an operation reports; "" for none, and for one that is too large. For checks of something
/// else: other checks examine the size, and whether the operation stays within its buffer.
std::string ReadGuarded(WatchedPlugin& plugin, TextOperation operation);

#endif
