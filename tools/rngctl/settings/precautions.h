#ifndef TOOLS_RNGCTL_SETTINGS_PRECAUTIONS_H
#define TOOLS_RNGCTL_SETTINGS_PRECAUTIONS_H

#include "tools/rngctl/files/path_facts.h"

#include <string>

/// \file
/// What must hold before the library stores a default in `file`. Those that find a reason not to store
/// throw a `Refusal` with it.

/// Nothing has been changed so far. `why` has no full stop, `fix` is a sentence.
[[noreturn]] void RefuseToStore(const std::string& file, const std::string& why,
                                const std::string& fix);

/// The library has stored something, but not what it was asked to. `error` is empty if it reported
/// success.
[[noreturn]] void RefuseAfterStoring(const std::string& file, const std::string& found,
                                     const std::string& error);

/// If a process was killed after it had removed the file and before it had renamed the complete new one,
/// puts the new one in its place.
void FinishInterruptedStore(const std::string& file);

/// The library follows a dangling link and creates what it names, and it writes into a left-over
/// temporary file: what a link of that name leads to, or a file that another user keeps open.
void CheckLinks(const std::string& file);

/// That the library can read the file to its end and replace it completely. The refusal says whose the file is.
void CheckStorable(const std::string& file);

/// Prints what storing will remove, apart from the old default.
void WarnOfLosses(const std::string& file);

/// The file is stored. Prints that it has another owner or group than before, if its mode keeps those from
/// reading it.
void WarnOfNewOwner(const std::string& file, const PathFacts& before);

#endif
