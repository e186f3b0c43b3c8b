#include "plugins/interactive/kind.h"

#include <dlfcn.h>
#include <sys/auxv.h>

std::string FindHelper() {
  Dl_info plugin = {};
  if (!::dladdr(&kKind, &plugin) || !plugin.dli_fname || *plugin.dli_fname != '/') return "";
  const std::string file = plugin.dli_fname;
  return file.substr(0, file.rfind('/') + 1) + RNG_HELPERS_FROM_PLUGINS + '/' + kKind.helper;
}

bool HasMoreRightsThanUser() { return ::getauxval(AT_SECURE) != 0; }
