#ifndef TOOLS_RNGCTL_PROCESS_STATE_MEMORY_MAP_H
#define TOOLS_RNGCTL_PROCESS_STATE_MEMORY_MAP_H

#include "tools/rngctl/process/state.h"

#include <cstddef>
#include <cstdint>
#include <map>

/// The memory of this process when the object was built. It tells whether a pointer that somebody left
/// behind can still be read.
class MemoryMap {
 public:
  MemoryMap();

  bool IsKnown() const { return !readable.empty(); }

  /// How many bytes from there on can be read.
  std::size_t CountReadable(const void* address) const;

  /// The text there, or as much of it as can be read.
  std::string ReadText(const char* address) const;

  Place PlaceOf(const void* address) const;

 private:
  std::map<std::uintptr_t, std::uintptr_t> readable;  // the end, by begin
};

#endif
