#ifndef TOOLS_RNGCTL_DOCTOR_PERMISSIONS_WAY_H
#define TOOLS_RNGCTL_DOCTOR_PERMISSIONS_WAY_H

#include "tools/rngctl/doctor/permissions/rights.h"

#include <string>
#include <vector>

/// An entry that the system looks up on the way to a file, and the directory where it does.
struct Step {
  std::string directory;
  Rights ofDirectory;
  std::string entry;  ///< its path
  Rights ofEntry;     ///< of the link itself, if it is one
};

/// The way to a file or directory: all entries that the system looks up, those of links included. It ends
/// at an entry that does not exist or that this user may not see, and after as many links as the system
/// follows. Where it is complete, its last entry is what the path leads to.
std::vector<Step> WalkTo(const std::string& path);

#endif
