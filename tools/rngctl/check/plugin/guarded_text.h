#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_TEXT_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_TEXT_H

#include "tools/rngctl/check/plugin/watched_plugin.h"

#include <string>

using TextOperation = std::int32_t (WatchedPlugin::*)(char* buffer);

/// The text that an operation reports, "" for none. For checks of something else: other checks examine
/// whether the operation stays within its buffer.
std::string ReadGuarded(WatchedPlugin& plugin, TextOperation operation);

#endif
