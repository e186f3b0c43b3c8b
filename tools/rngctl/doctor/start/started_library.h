#ifndef TOOLS_RNGCTL_DOCTOR_START_STARTED_LIBRARY_H
#define TOOLS_RNGCTL_DOCTOR_START_STARTED_LIBRARY_H

#include "tools/rngctl/doctor/start/messages.h"

#include <string>

/// The file name of the kind's plug-in, "" for none of the kinds.
std::string LibraryFileOf(const std::string& kind);

/// Lookups in the answer of a start. Each returns null or "" if it finds nothing.

/// The file that the loader takes for the plug-in of the kind.
std::string TakenFor(const std::string& kind, const StartAnswer& answer);

/// The kind whose plug-in is the file.
std::string KindOfFile(const std::string& file, const StartAnswer& answer);

const KindLookup* FindLookup(const std::string& kind, const StartAnswer& answer);
const StartedGenerator* FindObject(std::uint64_t object, const StartAnswer& answer);

bool IsSameFile(const std::string& one, const std::string& other);

/// Whether the generator's table or code is in the file.
bool LiesIn(const StartedGenerator& generator, const std::string& file);

/// The first generator that does.
const StartedGenerator* FindIn(const std::string& file, const StartAnswer& answer);

/// Of the plug-in files other than `own`, the one that holds the generator's code or table.
std::string ForeignFileOf(const StartedGenerator& generator, const std::string& own,
                          const StartAnswer& answer);

/// A plug-in file other than `own` whose code several generators run, although it made only one: another
/// plug-in has a class of the same name.
std::string FindSharedCode(const std::string& own, const StartAnswer& answer);

/// Where a plug-in closed another one's file, which was unloaded although the library had not stopped.
/// A later call of that generator is undefined behaviour.
const ForeignClose* FindForeignClose(const StartAnswer& answer);

#endif
