#include "benchmarks/timing/peers/peers.h"
#include "benchmarks/timing/profile_timing.h"

#include <cstring>
#include <ini.h>

namespace {

struct Wanted {
  const char* section;
  const char* key;
  char* buffer;
  std::size_t size;
  bool isFound;
};

int Take(void* user, const char* section, const char* key, const char* value) {
  auto* const wanted = static_cast<Wanted*>(user);
  if (std::strcmp(section, wanted->section) != 0 || std::strcmp(key, wanted->key) != 0) return 1;
  std::strncpy(wanted->buffer, value, wanted->size - 1);
  wanted->isFound = true;
  return 1;
}

bool Read(const char* path, const char* section, const char* key, char* buffer, std::size_t size) {
  Wanted wanted{section, key, buffer, size, false};
  return ::ini_parse(path, Take, &wanted) == 0 && wanted.isFound;
}

}  // namespace

void RegisterInih() { RegisterProfilePeer("inih", Read, nullptr); }  // which only reads
