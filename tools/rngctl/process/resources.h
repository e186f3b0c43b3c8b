#ifndef TOOLS_RNGCTL_PROCESS_RESOURCES_H
#define TOOLS_RNGCTL_PROCESS_RESOURCES_H

#include <cstddef>
#include <map>
#include <set>
#include <string>

/// The resources that this process holds, as the system reports them.

/// Leaves out the thread that the C library starts for timers with SIGEV_THREAD and never ends, unless
/// the system does not show what threads wait for.
std::set<std::string> ThreadsOfThisProcess();

/// Whether only these threads are left. Waits for a while, because a thread that was joined remains
/// visible for a moment.
bool AreOnlyLeft(const std::set<std::string>& threads);

/// The open files by number, with what each refers to.
std::map<std::string, std::string> OpenFiles();

/// The functions that the system and the C++ runtime call on an event, by event.
std::map<std::string, void*> Handlers();

struct ProcessSize {
  std::size_t files;
  std::size_t threads;
  std::size_t mappings;
  std::size_t heap;          ///< bytes that are allocated and not freed
  std::size_t addressSpace;  ///< bytes
};
ProcessSize SizeOfThisProcess();

#endif
