#ifndef TOOLS_RNGCTL_DOCTOR_CAUSES_REPORTED_H
#define TOOLS_RNGCTL_DOCTOR_CAUSES_REPORTED_H

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/report.h"

#include <chrono>

/// Adds the devices and problems that the plug-in reports, if any, to a row that has its verdict. A
/// plug-in knows better than the doctor why it is not available, so its problems become the advice.
void AddReported(GeneratorReport& report, const ProviderCatalogueEntry& row,
                 std::chrono::seconds limit);

#endif
