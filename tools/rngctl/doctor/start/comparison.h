#ifndef TOOLS_RNGCTL_DOCTOR_START_COMPARISON_H
#define TOOLS_RNGCTL_DOCTOR_START_COMPARISON_H

#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/doctor/start/evidence.h"

/// Corrects the row if a start with all plug-ins treated its plug-in otherwise than its own child did. The
/// start is authoritative: a generator is loaded if a host gets it from GetRng of its kind.
void CompareWithStart(GeneratorReport& row, const StartEvidence& start, std::chrono::seconds limit);

#endif
