#ifndef TOOLS_RNGCTL_COMMANDS_GENERATORS_H
#define TOOLS_RNGCTL_COMMANDS_GENERATORS_H

#include "tools/rngctl/devices/device_report.h"

#include <string>
#include <vector>

/// A generator that the started library has, as it describes itself. The texts are from outside.
struct Generator {
  std::string name;
  bool isInteractive;
  std::vector<std::string> flags;  ///< the names of its capabilities
  std::string description;
  DeviceReport report = {};
};

/// First the generators with a capability, in catalogue order, then those without.
std::vector<Generator> LoadedGenerators();

#endif
