#ifndef TOOLS_RNGCTL_DOCTOR_START_VERDICT_H
#define TOOLS_RNGCTL_DOCTOR_START_VERDICT_H

#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/process/child.h"

/// Corrects the row if a start with all plug-ins treated its plug-in differently. The start is
/// authoritative.
void CompareWithStart(GeneratorReport& row, const ChildResult& start);

/// Describes that start.
StartReport JudgeStart(const ChildResult& result, std::chrono::seconds limit);

#endif
