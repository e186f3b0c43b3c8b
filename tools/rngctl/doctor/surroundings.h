#ifndef TOOLS_RNGCTL_DOCTOR_SURROUNDINGS_H
#define TOOLS_RNGCTL_DOCTOR_SURROUNDINGS_H

#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/process/child.h"

/// Asks a child, and shows the user what rngctl is waiting for.
ChildResult Ask(const DoctorQuestion& question, const std::string& waitedFor,
                std::chrono::seconds limit, const std::string& libraryPath = "");

/// What is found out before any plug-in is examined. The X library and the known-path service are other
/// people's code, too, so only children call them. Each throws a `Refusal` when the child's answer is
/// not understood.
SearchOrder FindSearch(std::chrono::seconds limit);
SettingsReport FindSettings(std::chrono::seconds limit, const SearchOrder& search);
DisplayReport FindDisplay(std::chrono::seconds limit, const SearchOrder& search);

/// Files that an author may have misnamed. Case matters.
std::vector<std::string> ListStrays(const SearchOrder& search);

#endif
