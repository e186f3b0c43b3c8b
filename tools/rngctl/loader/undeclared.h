#ifndef TOOLS_RNGCTL_LOADER_UNDECLARED_H
#define TOOLS_RNGCTL_LOADER_UNDECLARED_H

#include <string>

/// The first symbol that an open plug-in finds only because this program happens to have it, and not in
/// a library that the plug-in declares as a dependency. Other programs need not have it. "" without one.
std::string FindUndeclared(void* library);

#endif
