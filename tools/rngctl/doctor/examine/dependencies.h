#ifndef TOOLS_RNGCTL_DOCTOR_EXAMINE_DEPENDENCIES_H
#define TOOLS_RNGCTL_DOCTOR_EXAMINE_DEPENDENCIES_H

#include <set>
#include <string>
#include <vector>

/// The files of all libraries in this process, as the loader names them.
using LoadedFiles = std::set<std::string>;
LoadedFiles ListLoadedFiles();

/// Those that came since, without the plug-in itself: its dependencies, and what it opened.
std::vector<std::string> ListLoadedSince(const LoadedFiles& before, const std::string& plugin);

#endif
