#ifndef TOOLS_RNGCTL_DOCTOR_START_START_VERDICT_H
#define TOOLS_RNGCTL_DOCTOR_START_START_VERDICT_H

#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/doctor/start/evidence.h"

/// Describes the start. What the reports of the rows already say is not said again; they are those of the
/// kinds that were examined.
StartReport JudgeStart(const StartEvidence& start, const std::vector<GeneratorReport>& rows,
                       std::chrono::seconds limit);

#endif
