#include "providers/display_probe.h"

#include "providers/library_handle.h"

#include <dlfcn.h>

namespace {

// dlerror decides whether the lookup succeeded, not the value that dlsym returned.
template <typename Function>
bool FindFunction(const LibraryHandle& library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(library.get(), name));
  return ::dlerror() == nullptr;
}

}  // namespace

bool ProbeXDisplay() {
  void* (*openDisplay)(const char* displayName);
  int (*closeDisplay)(void* display);

  const LibraryHandle x11(::dlopen("libX11.so.6", RTLD_LAZY));
  if (!x11) return false;
  if (!FindFunction(x11, "XOpenDisplay", openDisplay)) return false;
  void* const display = openDisplay(nullptr);
  if (!display) return false;
  // Without a function to close it, the connection stays open and the display does not count.
  if (!FindFunction(x11, "XCloseDisplay", closeDisplay)) return false;
  closeDisplay(display);
  return true;
}
