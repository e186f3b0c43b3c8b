#include "tools/rngctl/process/state/memory_map.h"

#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <iterator>
#include <sstream>

MemoryMap::MemoryMap() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::istringstream words(line);
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    char dash = 0;
    char isReadable = 0;
    words >> std::hex >> begin >> dash >> end >> isReadable;
    if (isReadable != 'r') continue;
    const auto last = readable.empty() ? readable.end() : std::prev(readable.end());
    if (last != readable.end() && last->second == begin) {
      last->second = end;
    } else {
      readable.emplace_hint(readable.end(), begin, end);
    }
  }
}

std::size_t MemoryMap::CountReadable(const void* address) const {
  const auto place = reinterpret_cast<std::uintptr_t>(address);
  const auto next = readable.upper_bound(place);
  if (next == readable.begin()) return 0;
  const std::uintptr_t end = std::prev(next)->second;
  return place < end ? end - place : 0;
}

std::string MemoryMap::ReadText(const char* address) const {
  return {address, ::strnlen(address, CountReadable(address))};
}

Place MemoryMap::PlaceOf(const void* address) const {
  if (CountReadable(address) == 0) return kUnmapped;
  Dl_info library;
  return ::dladdr(address, &library) != 0 ? library.dli_fname : "";
}
