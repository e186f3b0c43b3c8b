#ifndef TOOLS_RNGCTL_DOCTOR_EXAMINE_ANSWERS_H
#define TOOLS_RNGCTL_DOCTOR_EXAMINE_ANSWERS_H

#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/process/state.h"

#include <cstddef>
#include <string>
#include <vector>

#include <rngaggregator/provider.h>

/// More of a text tells nobody anything, and it is sent again with each step.
constexpr std::size_t kMostText = 4096;

/// Makes the two calls with which the library reads a name.
ReportedName AskForName(IRngProvider& provider);

/// The message of the exception that is being handled, "" without one. Its class must still be loaded.
std::string MessageOfException();

/// Adds what is different in this process, in sentences without subject, unless it is there already. Left
/// out are its children: the parent sees all that is left running.
void AddChanges(std::vector<std::string>& changes, ProcessSnapshot before);

#endif
