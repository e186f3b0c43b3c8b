#ifndef TOOLS_RNGCTL_WATCHED_TEXT_H
#define TOOLS_RNGCTL_WATCHED_TEXT_H

#include "watched_plugin.h"

#include <string>

using TextOperation = std::int32_t (IRngProvider::*)(char* buffer);

/// The text that one of the operations gives, "" for none, for checks of something else: whether it
/// keeps to its buffer is the matter of another.
std::string ReadGuarded(WatchedPlugin& plugin, TextOperation operation);

#endif
