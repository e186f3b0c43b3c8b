#ifndef TOOLS_RNGCTL_LOADER_CONFIGURED_H
#define TOOLS_RNGCTL_LOADER_CONFIGURED_H

#include <string>
#include <vector>

inline constexpr char kLoaderConfiguration[] = "/etc/ld.so.conf";

/// The directories in a configuration file of ldconfig and in the files that it includes. The loader
/// does not search these directories: it knows what ldconfig found in them when it ran last.
std::vector<std::string> ListConfiguredDirectories(const std::string& file);

#endif
