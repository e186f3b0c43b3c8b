#include "benchmarks/timing/peers/peers.h"
#include "benchmarks/timing/profile_timing.h"

#define SI_NO_CONVERSION  // plain bytes, as in the other benchmarks
#include <SimpleIni.h>
#include <cstring>

namespace {

bool Read(const char* path, const char* section, const char* key, char* buffer, std::size_t size) {
  CSimpleIniA file;
  if (file.LoadFile(path) < 0) return false;
  const char* const value = file.GetValue(section, key);
  if (!value) return false;
  std::strncpy(buffer, value, size - 1);
  return true;
}

bool Write(const char* path, const char* section, const char* key, const char* value) {
  CSimpleIniA file;
  if (file.LoadFile(path) < 0 || file.SetValue(section, key, value) < 0) return false;
  return file.SaveFile(path) >= 0;
}

}  // namespace

void RegisterSimpleIni() { RegisterProfilePeer("SimpleIni", Read, Write); }
