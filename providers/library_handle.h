#ifndef PROVIDERS_LIBRARY_HANDLE_H
#define PROVIDERS_LIBRARY_HANDLE_H

#include <dlfcn.h>
#include <memory>

struct CloseLibrary {
  void operator()(void* handle) const { ::dlclose(handle); }
};

/// Owns a handle that `dlopen` returned, and closes it. Null when the library could not be opened.
///
/// For libraries that are not plug-ins; each caller chooses the mode of opening. `DllLoader` opens
/// the plug-ins.
using LibraryHandle = std::unique_ptr<void, CloseLibrary>;

#endif
