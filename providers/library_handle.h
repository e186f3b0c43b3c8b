#ifndef PROVIDERS_LIBRARY_HANDLE_H
#define PROVIDERS_LIBRARY_HANDLE_H

#include <dlfcn.h>
#include <memory>

struct CloseLibrary {
  void operator()(void* handle) const { ::dlclose(handle); }
};

/// Owns what `dlopen` returned and closes it. Null when the library could not be opened.
///
/// For libraries that are not plug-ins: each caller chooses its own mode of opening. Plug-ins are
/// opened by `DllLoader`.
using LibraryHandle = std::unique_ptr<void, CloseLibrary>;

#endif
