#ifndef TOOLS_RNGCTL_PROCESS_TRACES_H
#define TOOLS_RNGCTL_PROCESS_TRACES_H

#include <cstddef>
#include <map>
#include <set>
#include <string>

/// What this process holds, as the system sees it.

std::set<std::string> ThreadsOfThisProcess();

/// The open files, by number, with what each refers to.
std::map<std::string, std::string> OpenFiles();

/// The functions that system and runtime call when something happens, by what that is.
std::map<std::string, void*> Handlers();

struct ProcessSize {
  std::size_t files;
  std::size_t mappings;
  std::size_t heap;          ///< bytes that are handed out and not given back
  std::size_t addressSpace;  ///< bytes
};
ProcessSize SizeOfThisProcess();

#endif
