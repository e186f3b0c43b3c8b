#ifndef TOOLS_RNGCTL_DOCTOR_START_COMPARISON_H
#define TOOLS_RNGCTL_DOCTOR_START_COMPARISON_H

#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/doctor/start/evidence.h"

/// Corrects the row if its plug-in fared differently in a start with all plug-ins than alone. The
/// start is authoritative: a generator is loaded if a host gets it from GetRng of its kind.
void CompareWithStart(GeneratorReport& row, const StartEvidence& start, std::chrono::seconds limit);

#endif
