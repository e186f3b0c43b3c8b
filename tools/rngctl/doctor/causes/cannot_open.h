#ifndef TOOLS_RNGCTL_DOCTOR_CAUSES_CANNOT_OPEN_H
#define TOOLS_RNGCTL_DOCTOR_CAUSES_CANNOT_OPEN_H

#include "tools/rngctl/doctor/causes/file_fault.h"
#include "tools/rngctl/doctor/report.h"

/// The verdicts on a plug-in that the loader does not open. `report.file` is the file that it would
/// take, or empty.

/// `words` are the loader's.
void PutCannotBeOpened(GeneratorReport& report, const std::string& words,
                       const SearchOrder& search);

/// On what is not a file, which nobody has tried to open.
void PutSpecialFile(GeneratorReport& report, const FileFault& fault);

void PutNotInstalled(GeneratorReport& report, const SearchOrder& search);

#endif
