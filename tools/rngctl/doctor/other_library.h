#ifndef TOOLS_RNGCTL_DOCTOR_OTHER_LIBRARY_H
#define TOOLS_RNGCTL_DOCTOR_OTHER_LIBRARY_H

#include "tools/rngctl/loader/search_order.h"

/// A warning about another file with the library's name on LD_LIBRARY_PATH, beside rngctl or in ../lib
/// beside it; "" if there is none. Programs may load that one, because their run paths are not known.
std::string WarnOfOtherLibrary(const SearchOrder& search);

#endif
