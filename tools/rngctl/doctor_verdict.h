#ifndef TOOLS_RNGCTL_DOCTOR_VERDICT_H
#define TOOLS_RNGCTL_DOCTOR_VERDICT_H

#include "child.h"
#include "doctor_report.h"
#include "providers/catalogue.h"

/// Puts into words what the child of a row, which had `limit` to end, has sent and how it ended.
GeneratorReport JudgeRow(const ProviderCatalogueEntry& row, const ChildResult& result,
                         std::chrono::seconds limit, const SearchOrder& search);

/// The warning about what the child of `ExamineBinding` has found missing, "" for none.
std::string BindingWarning(const ChildResult& result);

/// Says so where a start with all plug-ins, whose child ended with `start`, has not done with the plug-in
/// of the row what is to be expected of it. The start is right.
void CompareWithStart(GeneratorReport& row, const ChildResult& start);

/// Puts that start into words.
StartReport JudgeStart(const ChildResult& result, std::chrono::seconds limit);

/// The report of a row whose plug-in is not tried, because it needs a display and there is none.
GeneratorReport JudgeRowWithoutDisplay(const ProviderCatalogueEntry& row,
                                       const DisplayReport& display, const SearchOrder& search);

#endif
