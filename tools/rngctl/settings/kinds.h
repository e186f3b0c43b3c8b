#ifndef TOOLS_RNGCTL_SETTINGS_KINDS_H
#define TOOLS_RNGCTL_SETTINGS_KINDS_H

#include <string>

/// Whether the catalogue has that kind.
bool IsKind(const std::string& name);

/// The kind that was probably meant by an unknown name: one with a similar name, or with a similar file
/// name. For "biox11" that is "unixx11", whose file is librngbiox11.so. "" if nothing is similar.
std::string FindMeantKind(const std::string& name);

#endif
