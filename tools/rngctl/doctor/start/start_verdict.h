#ifndef TOOLS_RNGCTL_DOCTOR_START_START_VERDICT_H
#define TOOLS_RNGCTL_DOCTOR_START_START_VERDICT_H

#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/doctor/start/evidence.h"

/// Describes the start. `rows` are the reports of the examined kinds; what they already say is not
/// repeated.
StartReport JudgeStart(const StartEvidence& start, const std::vector<GeneratorReport>& rows,
                       std::chrono::seconds limit);

#endif
