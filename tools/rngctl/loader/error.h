#ifndef TOOLS_RNGCTL_LOADER_ERROR_H
#define TOOLS_RNGCTL_LOADER_ERROR_H

#include <string>

/// The message of `dlerror` after a failure, and what it names. The loader reports only text.
struct LoaderError {
  std::string words;            ///< the whole message; empty: there was no failure
  std::string file;             ///< what the message is about, as the loader names it, or empty
  std::string missingFile;      ///< the library that was not found or could not be opened, or empty
  std::string undefinedSymbol;  ///< the symbol that nothing defines, or empty
};

LoaderError ParseLoaderError(const std::string& words);

#endif
