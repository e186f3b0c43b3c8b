#ifndef TOOLS_RNGCTL_DOCTOR_OTHER_LIBRARY_H
#define TOOLS_RNGCTL_DOCTOR_OTHER_LIBRARY_H

#include "tools/rngctl/loader/search_order.h"

/// A sentence about another file with the library's name, on LD_LIBRARY_PATH, beside rngctl or in the
/// folder for libraries beside that; "" if there is none. Programs may load that one: their own run paths
/// are not known.
std::string WarnOfOtherLibrary(const SearchOrder& search);

#endif
