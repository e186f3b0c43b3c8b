#include "settings/directories.h"

#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t kDirectoryMode = 0775;

bool Exists(const char* path) { return ::access(path, F_OK) == 0; }

}  // namespace

bool CreateParentDirectories(const char* path) {
  std::string prefix(path);
  if (prefix[0] != '/') return false;
  if (Exists(path)) return true;
  for (auto slash = prefix.find('/', 1); slash != std::string::npos;
       slash = prefix.find('/', slash + 1)) {
    prefix[slash] = '\0';
    if (!Exists(prefix.c_str()) && ::mkdir(prefix.c_str(), kDirectoryMode) != 0) return false;
    prefix[slash] = '/';
  }
  return true;
}
