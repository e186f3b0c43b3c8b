#ifndef TOOLS_RNGCTL_DOCTOR_DISTURBANCE_H
#define TOOLS_RNGCTL_DOCTOR_DISTURBANCE_H

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/process/child.h"

/// The verdicts about a plug-in that disturbs the program that uses it.

/// Puts the verdict on what happened in `step`: "crashed", "calls Initialize, which no plug-in may,".
void PutDisturbance(GeneratorReport& report, DoctorVerdict verdict, const std::string& what,
                    PluginStep step, const ProviderCatalogueEntry& row);

/// The verdict on a plug-in that ended its child so.
DoctorVerdict VerdictOf(const ChildResult& result);

#endif
