#ifndef TOOLS_RNGCTL_DOCTOR_PERMISSIONS_UNUSUAL_FILE_H
#define TOOLS_RNGCTL_DOCTOR_PERMISSIONS_UNUSUAL_FILE_H

#include "tools/rngctl/doctor/permissions/findings.h"

#include <vector>

/// Adds that a file is a link, has several names or is no regular file, where that is not usual. It does
/// not let others write, so it is never root's concern.
void AddUnusualFile(std::vector<PermissionReport>& findings, const Subject& subject);

#endif
