#ifndef TOOLS_RNGCTL_BORROWED_H
#define TOOLS_RNGCTL_BORROWED_H

#include <string>

/// The first symbol that an open plug-in finds because this program has it, and not because the plug-in
/// is linked with what has it: other programs need not have it. "" without one.
std::string FindBorrowed(void* library);

#endif
