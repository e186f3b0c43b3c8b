#ifndef TOOLS_RNGCTL_LOADER_ERROR_H
#define TOOLS_RNGCTL_LOADER_ERROR_H

#include <string>

/// What `dlerror` said after a failure. The loader reports in words alone; they are taken apart here.
struct LoaderError {
  std::string words;            ///< as they are; empty: there was no failure
  std::string missingFile;      ///< the library that was not found or could not be opened, or empty
  std::string undefinedSymbol;  ///< the symbol that nothing defines, or empty
};

LoaderError ParseLoaderError(const std::string& words);

#endif
