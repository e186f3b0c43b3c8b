#ifndef TOOLS_RNGCTL_DOCTOR_CAUSES_UNAVAILABLE_H
#define TOOLS_RNGCTL_DOCTOR_CAUSES_UNAVAILABLE_H

#include "providers/catalogue.h"

#include <string>

/// What to do about a plug-in that works, but has no generator to offer: what a generator of this kind
/// needs. `dataFile` is the path in the settings that the plug-in was given, for the kind that reads it.
std::string FixUnavailable(const ProviderCatalogueEntry& row, const std::string& dataFile);

#endif
