#ifndef TOOLS_RNGCTL_DOCTOR_CAUSES_WRONG_KIND_H
#define TOOLS_RNGCTL_DOCTOR_CAUSES_WRONG_KIND_H

#include "tools/rngctl/doctor/report.h"

/// What to do about a plug-in that seems to belong to another kind than its file name says.

/// It does not export the factory of its kind.
std::string FixWrongFactory(const GeneratorReport& report);

/// The file name of the kind whose factory the file exports; "" when it exports none.
std::string FileNameByFactory(const std::string& file);

/// It reports the name `name`.
std::string FixWrongName(const GeneratorReport& report, const std::string& name);

#endif
