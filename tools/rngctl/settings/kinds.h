#ifndef TOOLS_RNGCTL_SETTINGS_KINDS_H
#define TOOLS_RNGCTL_SETTINGS_KINDS_H

#include <string>

/// Whether a plug-in of that kind may exist.
bool IsKind(const std::string& name);

/// The kind that somebody who configured an unknown one probably meant, "" if none resembles it.
std::string FindMeantKind(const std::string& name);

#endif
