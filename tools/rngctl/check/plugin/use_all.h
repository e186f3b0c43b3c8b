#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_USE_ALL_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_USE_ALL_H

#include "tools/rngctl/check/plugin/watched_plugin.h"

/// Calls each operation of a started plug-in, and draws in this thread, too, which may live on after the plug-in
/// is unloaded. Leaves out what ends the process, throws or waits: other checks report that.
void UseAll(WatchedPlugin& plugin);

#endif
