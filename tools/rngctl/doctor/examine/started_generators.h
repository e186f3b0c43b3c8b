#ifndef TOOLS_RNGCTL_DOCTOR_EXAMINE_STARTED_GENERATORS_H
#define TOOLS_RNGCTL_DOCTOR_EXAMINE_STARTED_GENERATORS_H

#include "tools/rngctl/doctor/start/messages.h"

#include <vector>

#include <rngaggregator/provider.h>

/// What the doctor can find out about the started library without calling a plug-in.

/// The generator with the files that hold its operations.
StartedGenerator Locate(IRngProvider* provider);

/// For each kind that the start has tried to load and whose plug-in's name the loader finds in the process: the file.
std::vector<TakenFile> ListTakenFiles(const std::vector<StartPart>& parts);

#endif
