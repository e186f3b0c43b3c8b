#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_TEXT_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_TEXT_H

#include "tools/rngctl/check/plugin/watched_plugin.h"

#include <string>

using TextOperation = std::int32_t (IRngProvider::*)(char* buffer);

/// The text that one of the operations gives, "" for none, for checks of something else: whether it
/// keeps to its buffer is the matter of another.
std::string ReadGuarded(WatchedPlugin& plugin, TextOperation operation);

#endif
