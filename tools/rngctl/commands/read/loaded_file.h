#ifndef TOOLS_RNGCTL_COMMANDS_READ_LOADED_FILE_H
#define TOOLS_RNGCTL_COMMANDS_READ_LOADED_FILE_H

#include <string>

/// The file from which code in this process was loaded.
struct LoadedFile {
  std::string path = {};
  std::string sha256 = {};   ///< of the whole file, in hexadecimal
  std::string problem = {};  ///< why there is no digest: "has been replaced since it was loaded"
};

/// Compares the file with the memory: if it has been replaced, its digest would be that of another plug-in.
LoadedFile FindLoadedFile(const void* code);

#endif
