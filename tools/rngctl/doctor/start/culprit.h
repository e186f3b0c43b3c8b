#ifndef TOOLS_RNGCTL_DOCTOR_START_CULPRIT_H
#define TOOLS_RNGCTL_DOCTOR_START_CULPRIT_H

#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/doctor/start/evidence.h"

/// What stands for the X display where a culprit is named; no kind has this name.
inline constexpr char kDisplayCulprit[] = "display";

/// The kind whose plug-in made the start fail, `kDisplayCulprit`, or "" if it is unknown. Between
/// the steps that show which plug-in is at work, one that fails in the same way alone is the culprit.
std::string FindCulprit(const StartEvidence& start, const std::vector<GeneratorReport>& rows);

#endif
