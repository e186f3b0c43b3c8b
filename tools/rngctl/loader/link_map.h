#ifndef TOOLS_RNGCTL_LOADER_LINK_MAP_H
#define TOOLS_RNGCTL_LOADER_LINK_MAP_H

#include <dlfcn.h>
#include <link.h>

/// What the loader knows about an open library; null for a null handle.
inline const link_map* MapOf(void* library) {
  link_map* map = nullptr;
  return library && ::dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 ? map : nullptr;
}

#endif
