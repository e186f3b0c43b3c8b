#ifndef TOOLS_RNGCTL_PROCESS_SPAWN_H
#define TOOLS_RNGCTL_PROCESS_SPAWN_H

#include "tools/rngctl/process/descriptor.h"

#include <string>
#include <sys/types.h>

/// This program once more, with a hidden command.
struct SpawnedChild {
  pid_t process;
  Descriptor messages;  ///< our end of the channel
  Descriptor output;    ///< the reading end of its standard output
  Descriptor errors;    ///< that of its standard error, if it was asked for
};

/// Starts the child, which reads nothing from standard input, and sends it `request`. `libraryPath`,
/// unless empty, is its LD_LIBRARY_PATH. Its standard error is this process's unless `readsErrors`. No
/// descriptor blocks. Throws a `Refusal` on failure.
SpawnedChild Spawn(const std::string& command, const std::string& request,
                   const std::string& libraryPath, bool readsErrors);

#endif
