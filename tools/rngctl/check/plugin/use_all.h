#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_USE_ALL_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_USE_ALL_H

#include "tools/rngctl/check/plugin/watched_plugin.h"

/// Calls each operation of a started plug-in. Draws in the calling thread, too, because that thread may outlive the
/// plug-in. Leaves out operations that end the process, throw or wait: other checks report those.
void UseAll(WatchedPlugin& plugin);

#endif
