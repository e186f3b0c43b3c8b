#ifndef TOOLS_RNGCTL_COMMANDS_DEFAULT_H
#define TOOLS_RNGCTL_COMMANDS_DEFAULT_H

#include <cstdint>
#include <string>

/// Prints the configured default and the one that a host gets now. `mask` has the acceptable fallbacks.
void RunDefault(std::uint32_t mask);

/// Stores the default; an empty name removes it.
void RunDefaultSet(const std::string& name, const std::string& hardwareId);

#endif
