#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_PLUGIN_FILE_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_PLUGIN_FILE_H

#include "tools/rngctl/channel/messages.h"

#include <string>

/// The plug-in that is checked.
struct PluginFile {
  std::string path;     ///< absolute
  std::string factory;  ///< the function to call; empty when it is unknown
  std::string kind;     ///< the catalogue's name for the file, empty when it has none
};
RNGCTL_MESSAGE(PluginFile, path, factory, kind)

#endif
