#ifndef TOOLS_RNGCTL_SETTINGS_KINDS_H
#define TOOLS_RNGCTL_SETTINGS_KINDS_H

#include <string>

/// Whether a plug-in of that kind may exist.
bool IsKind(const std::string& name);

/// The kind that somebody who wrote an unknown one probably meant, by its name or by that of its file:
/// "unixx11" for "biox11", because its file is librngbiox11.so. "" if no name resembles it.
std::string FindMeantKind(const std::string& name);

#endif
