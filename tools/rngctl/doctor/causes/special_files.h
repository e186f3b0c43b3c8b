#ifndef TOOLS_RNGCTL_DOCTOR_CAUSES_SPECIAL_FILES_H
#define TOOLS_RNGCTL_DOCTOR_CAUSES_SPECIAL_FILES_H

#include "tools/rngctl/doctor/report.h"

#include <string>
#include <vector>

/// FIFOs, sockets and devices with the names of plug-ins. Neither the doctor nor the start that it
/// tries may open them.
struct SpecialFiles {
  std::vector<std::string> kinds = {};  ///< whose plug-in is one
  std::string blocking = {};            ///< the first of them that never opens; "" for none
  std::string file = {};                ///< its path
};

/// `hasDisplay` says whether the library tries the kinds that need a display.
SpecialFiles FindSpecialFiles(const SearchOrder& search, bool hasDisplay);

/// The report of a start that was not tried because it would wait for the file that never opens.
StartReport ReportBlockedStart(const SpecialFiles& files);

#endif
