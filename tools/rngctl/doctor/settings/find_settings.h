#ifndef TOOLS_RNGCTL_DOCTOR_SETTINGS_FIND_SETTINGS_H
#define TOOLS_RNGCTL_DOCTOR_SETTINGS_FIND_SETTINGS_H

#include "tools/rngctl/doctor/report.h"

#include <chrono>

/// The settings file, what it configures, and the data file, asked in a child: the known-path service is
/// third-party code, and reading the file may hang. If the child gives no usable answer, that is
/// added to `failures` in a sentence.
SettingsReport FindSettings(std::chrono::seconds limit, const SearchOrder& search,
                            std::vector<std::string>& failures);

#endif
