#ifndef TOOLS_RNGCTL_DOCTOR_DISTURBANCE_H
#define TOOLS_RNGCTL_DOCTOR_DISTURBANCE_H

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/process/child.h"

/// The verdicts on a plug-in that disturbs the programs that use it.

/// Puts the verdict on what the plug-in did in `step`: "crashed", "calls Initialize, which plug-ins
/// must not do,".
void PutDisturbance(GeneratorReport& report, DoctorVerdict verdict, const std::string& what,
                    PluginStep step, const ProviderCatalogueEntry& row);

/// The verdict on a plug-in whose child ended like this.
DoctorVerdict VerdictOf(const ChildResult& result);

/// Whether every program that reaches this step of the plug-in fails.
bool IsDisturbance(const GeneratorReport& row);

/// A sentence without its subject, a plug-in or a start, about what it does to every program: it prints
/// on standard output, or it "changes the umask to 0077".
std::string DescribePrinting(const PrintedLines& printed);
std::string DescribeChange(const std::string& change);

#endif
