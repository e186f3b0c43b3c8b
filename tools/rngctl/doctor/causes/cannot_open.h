#ifndef TOOLS_RNGCTL_DOCTOR_CAUSES_CANNOT_OPEN_H
#define TOOLS_RNGCTL_DOCTOR_CAUSES_CANNOT_OPEN_H

#include "tools/rngctl/doctor/causes/file_fault.h"
#include "tools/rngctl/doctor/report.h"

/// The verdicts on a plug-in that the loader does not open. `report.file` is the file that the loader
/// would open, or empty.

/// `words` is the loader's message.
void PutCannotBeOpened(GeneratorReport& report, const std::string& words,
                       const SearchOrder& search);

/// For a FIFO, a socket or a device, which the doctor does not open.
void PutSpecialFile(GeneratorReport& report, const FileFault& fault);

void PutNotInstalled(GeneratorReport& report, const SearchOrder& search);

#endif
