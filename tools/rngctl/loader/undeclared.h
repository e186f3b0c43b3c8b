#ifndef TOOLS_RNGCTL_LOADER_UNDECLARED_H
#define TOOLS_RNGCTL_LOADER_UNDECLARED_H

#include <string>

struct Undeclared {
  std::string symbol = {};  ///< "" for none
  bool isOfLibrary =
      false;  ///< the aggregator defines it, so programs that are linked with it have it
};

/// A symbol that an open plug-in finds only because this program happens to have it, and not in a
/// library that the plug-in declares as a dependency. Other programs need not have it. A symbol of the
/// aggregator only if there is no other.
Undeclared FindUndeclared(void* library);

#endif
