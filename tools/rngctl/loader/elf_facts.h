#ifndef TOOLS_RNGCTL_LOADER_ELF_FACTS_H
#define TOOLS_RNGCTL_LOADER_ELF_FACTS_H

#include <string>
#include <vector>

/// What the file of a shared library says about itself, read without running any of its code.
struct ElfFacts {
  std::vector<std::string> exports;        ///< what others can bind to, except for what linkers add
  std::vector<std::string> needs;          ///< what it needs from others; weak symbols do not count
  std::vector<std::string> uniqueSymbols;  ///< of binding GNU_UNIQUE
  bool hasThreadDestructors = false;       ///< it registers destructors of thread_local objects
  bool hasStaticTls = false;
  bool refusesOpening = false;  ///< the loader loads it only with a program
  bool refusesUnloading = false;
  bool hasExecutableStack = false;
  bool isProgram = false;  ///< position-independent programs look much like libraries
};

/// Throws a `Refusal` for wrong usage when there is no such file, or it is not a shared library for
/// this machine.
ElfFacts ReadElfFacts(const std::string& path);

/// Whether the file itself exports the symbol; a lookup in an open library also finds symbols of its
/// dependencies. False for what is not a shared library for this machine. Reads only regular files,
/// because reading anything else might never return.
bool Exports(const std::string& path, const std::string& symbol);

#endif
