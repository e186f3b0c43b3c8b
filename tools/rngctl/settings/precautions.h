#ifndef TOOLS_RNGCTL_SETTINGS_PRECAUTIONS_H
#define TOOLS_RNGCTL_SETTINGS_PRECAUTIONS_H

#include "tools/rngctl/files/path_facts.h"

#include <string>
#include <vector>

/// \file
/// What must hold before the library stores a default in `file`. Those that find a reason not to store
/// throw a `Refusal` with it.

/// Advice for a user who may not read or write `path`.
std::string HowToGetAccess(const std::string& path);

/// For use before anything is changed. `why` has no full stop; `fix` is a sentence or ends with a command.
[[noreturn]] void RefuseToStore(const std::string& file, const std::string& why,
                                const std::string& fix);

/// The library reported a failure, or the file now says something else. `error` is the errno of the failure,
/// 0 if there is none.
[[noreturn]] void RefuseAfterStoring(const std::string& file, const std::string& found, int error);

/// The lines of the file that storing keeps: all that the library copies, without the default, its header
/// and empty lines.
std::vector<std::string> LinesToKeep(const std::string& file);

/// If a process was killed after it had removed the file and before it had renamed the complete new one,
/// puts the new one in its place.
void FinishInterruptedStore(const std::string& file);

/// Refuses a dangling link, because the library would create its target. Refuses a temporary file that
/// this user did not leave, because the library would write into it: to the target of a link, or to a
/// file that another user holds open.
void CheckLinks(const std::string& file);

/// Checks that the library can read the file to its end and replace it completely. If permissions prevent
/// that, the refusal names the owner.
void CheckStorable(const std::string& file);

/// Prints what storing will remove, apart from the old default.
void WarnOfLosses(const std::string& file);

/// After storing: prints that the owner or the group has changed, if the mode keeps the old ones from
/// reading the file.
void WarnOfNewOwner(const std::string& file, const PathFacts& before);

#endif
