#ifndef TOOLS_RNGCTL_DOCTOR_CAUSES_STRAYS_H
#define TOOLS_RNGCTL_DOCTOR_CAUSES_STRAYS_H

#include "tools/rngctl/doctor/report.h"

#include <vector>

/// Files in the searched directories that are named almost like plug-ins. The library does not load
/// them.
std::vector<StrayFile> ListStrays(const SearchOrder& search);

#endif
