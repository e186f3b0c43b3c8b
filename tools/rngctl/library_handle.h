#ifndef TOOLS_RNGCTL_LIBRARY_HANDLE_H
#define TOOLS_RNGCTL_LIBRARY_HANDLE_H

#include <dlfcn.h>
#include <link.h>
#include <memory>

struct CloseLibrary {
  void operator()(void* handle) const { ::dlclose(handle); }
};

/// What `dlopen` gave, closed when this ends; null when that was nothing.
using LibraryHandle = std::unique_ptr<void, CloseLibrary>;

/// What the loader knows of an open library; null without one.
inline link_map* MapOf(void* library) {
  link_map* map = nullptr;
  return library && ::dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 ? map : nullptr;
}

#endif
