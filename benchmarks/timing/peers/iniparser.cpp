#include "benchmarks/timing/peers/peers.h"
#include "benchmarks/timing/profile_timing.h"

#include <cstdio>
#include <cstring>
#include <iniparser/iniparser.h>
#include <memory>
#include <string>

namespace {

struct FreeDictionary {
  void operator()(dictionary* entries) const { ::iniparser_freedict(entries); }
};
using Dictionary = std::unique_ptr<dictionary, FreeDictionary>;

bool Read(const char* path, const char* section, const char* key, char* buffer, std::size_t size) {
  const Dictionary entries(::iniparser_load(path));
  if (!entries) return false;
  const std::string name = std::string(section) + ":" + key;
  const char* const value = ::iniparser_getstring(entries.get(), name.c_str(), nullptr);
  if (!value) return false;
  std::strncpy(buffer, value, size - 1);
  return true;
}

bool Write(const char* path, const char* section, const char* key, const char* value) {
  const Dictionary entries(::iniparser_load(path));
  const std::string name = std::string(section) + ":" + key;
  if (!entries || ::iniparser_set(entries.get(), name.c_str(), value) != 0) return false;
  std::FILE* const file = std::fopen(path, "w");
  if (!file) return false;
  ::iniparser_dump_ini(entries.get(), file);
  return std::fclose(file) == 0;
}

}  // namespace

void RegisterIniparser() { RegisterProfilePeer("iniparser", Read, Write); }
