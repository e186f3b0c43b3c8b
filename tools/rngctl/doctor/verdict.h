#ifndef TOOLS_RNGCTL_DOCTOR_VERDICT_H
#define TOOLS_RNGCTL_DOCTOR_VERDICT_H

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/process/child.h"

/// The report of a row: what its child, which had `limit` to finish, answered and how it ended.
GeneratorReport JudgeRow(const ProviderCatalogueEntry& row, const ChildResult& result,
                         std::chrono::seconds limit, const SearchOrder& search);

/// Whether that child could open the plug-in.
bool WasOpened(const ChildResult& result);

/// The warning about what a plug-in lacks, "" for none. No answer means that opening the plug-in
/// terminated the child, which its row reports.
std::string BindingWarning(const std::optional<BindingAnswer>& answer);

/// The report of a row whose plug-in is not tried, because it needs a display and there is none.
GeneratorReport JudgeRowWithoutDisplay(const ProviderCatalogueEntry& row,
                                       const DisplayReport& display, const SearchOrder& search);

#endif
