#ifndef TOOLS_RNGCTL_COMMANDS_READ_LOADED_FILE_H
#define TOOLS_RNGCTL_COMMANDS_READ_LOADED_FILE_H

#include <string>

/// The file from which code in this process was loaded.
struct LoadedFile {
  std::string path = {};
  std::string sha256 = {};   ///< of the whole file, in hexadecimal
  std::string problem = {};  ///< why there is no digest: "has been replaced since it was loaded"
};

/// If the file has been replaced since, its digest would be that of another plug-in.
LoadedFile FindLoadedFile(const void* code);

#endif
