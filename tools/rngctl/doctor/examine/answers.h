#ifndef TOOLS_RNGCTL_DOCTOR_EXAMINE_ANSWERS_H
#define TOOLS_RNGCTL_DOCTOR_EXAMINE_ANSWERS_H

#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/process/state.h"

#include <cstddef>
#include <string>
#include <vector>

#include <rngaggregator/provider.h>

/// Longer texts are cut: each one is sent again with every step, and no reader needs more.
constexpr std::size_t kMostText = 4096;

/// Makes the two calls with which the library reads a name.
ReportedName AskForName(IRngProvider& provider);

/// Adds what has changed in this process, in sentences without a subject. Changes that are already in the
/// list are left out. So are child processes, because the parent sees everything that is left running.
void AddChanges(std::vector<std::string>& changes, ProcessSnapshot before);

#endif
