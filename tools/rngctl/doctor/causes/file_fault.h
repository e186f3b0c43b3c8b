#ifndef TOOLS_RNGCTL_DOCTOR_CAUSES_FILE_FAULT_H
#define TOOLS_RNGCTL_DOCTOR_CAUSES_FILE_FAULT_H

#include <string>

/// Why what has a plug-in's name cannot be one.
struct FileFault {
  std::string reason = {};  ///< "it is a named pipe"; "" when the file system shows no fault
  std::string fix = {};
  bool isSpecial = false;   ///< a pipe, a socket or a device: to open it may have an effect
  bool neverOpens = false;  ///< whoever opens or reads it waits
};

/// Looks only at the file system: the file is not opened.
FileFault FindFileFault(const std::string& file);

/// The directory on the way to `file` that this user may not search, links included; "" for none.
std::string FindUnsearchable(const std::string& file);

#endif
