#ifndef TOOLS_RNGCTL_DOCTOR_PERMISSIONS_FINDINGS_H
#define TOOLS_RNGCTL_DOCTOR_PERMISSIONS_FINDINGS_H

#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/files/users.h"

#include <string>
#include <vector>

/// Something that programs load or write.
struct Subject {
  enum class Sort {
    kDirectory,  ///< in which files are looked up
    kPlugin,
    kLibrary,     ///< not a plug-in, but known by one name
    kDependency,  ///< of a plug-in: a library that usually has several names
    kSettings,
    kNewSettings  ///< the file in which the settings are written first
  };
  std::string path;
  Sort sort;
  bool isRoots;  ///< root's processes use it
};

/// Adds a finding unless the same is there already, which may have come from another subject.
void AddPermission(std::vector<PermissionReport>& findings, const PermissionReport& finding);

/// Adds what is wrong with one subject.
void AddFindings(std::vector<PermissionReport>& findings, const Subject& subject,
                 const Users& users);

#endif
