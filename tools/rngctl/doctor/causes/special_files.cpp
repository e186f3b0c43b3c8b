#include "tools/rngctl/doctor/causes/special_files.h"

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/causes/file_fault.h"

SpecialFiles FindSpecialFiles(const SearchOrder& search, bool hasDisplay) {
  SpecialFiles found;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    if (row.needsDisplay && !hasDisplay) continue;
    const std::string file = FindFirst(row.libraryFile, search);
    const FileFault fault = FindFileFault(file);
    if (!fault.isSpecial) continue;
    found.kinds.push_back(row.name);
    if (!fault.neverOpens || !found.blocking.empty()) continue;
    found.blocking = row.name;
    found.file = file;
  }
  return found;
}

StartReport ReportBlockedStart(const SpecialFiles& files) {
  StartReport start;
  start.problem = "was not tried, because it would hang on " + files.file;
  start.preventsUse = true;
  start.culprit = files.blocking;
  return start;
}
