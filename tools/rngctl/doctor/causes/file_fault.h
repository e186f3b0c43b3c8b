#ifndef TOOLS_RNGCTL_DOCTOR_CAUSES_FILE_FAULT_H
#define TOOLS_RNGCTL_DOCTOR_CAUSES_FILE_FAULT_H

#include <string>

/// Why a file with a plug-in's name cannot be a plug-in.
struct FileFault {
  std::string reason = {};  ///< "it is a named pipe (FIFO)"; "" when the file system shows no fault
  std::string fix = {};
  bool isSpecial = false;   ///< a FIFO, a socket or a device: opening it may have an effect
  bool neverOpens = false;  ///< whoever opens or reads it waits
};

/// Looks only at the file system: the file is not opened.
FileFault FindFileFault(const std::string& file);

#endif
