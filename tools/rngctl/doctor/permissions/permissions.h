#ifndef TOOLS_RNGCTL_DOCTOR_PERMISSIONS_PERMISSIONS_H
#define TOOLS_RNGCTL_DOCTOR_PERMISSIONS_PERMISSIONS_H

#include "tools/rngctl/doctor/report.h"

#include <vector>

/// Who besides root and the present user can change what programs load with the library or write with
/// it, and which of these files are links, have several names or are not regular. Looks only at the file
/// system. `report` must have the generators, the search order and the settings.
std::vector<PermissionReport> FindPermissions(const DoctorReport& report);

#endif
