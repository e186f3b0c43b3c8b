#include "plugins/interactive/kind.h"

#include <cerrno>
#include <dlfcn.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

std::string FindHelper() {
  Dl_info plugin = {};
  if (!::dladdr(&kKind, &plugin) || !plugin.dli_fname || *plugin.dli_fname != '/') return "";
  const std::string file = plugin.dli_fname;
  return file.substr(0, file.rfind('/') + 1) + RNG_HELPERS_FROM_PLUGINS + '/' + kKind.helper;
}

int CheckHelper(const std::string& path) {
  struct stat status = {};
  if (::access(path.c_str(), X_OK) != 0 || ::stat(path.c_str(), &status) != 0) return errno;
  return S_ISREG(status.st_mode) ? 0 : EISDIR;  // directories may have the same right
}

bool HasMoreRightsThanUser() { return ::getauxval(AT_SECURE) != 0; }
