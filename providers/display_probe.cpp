#include "providers/display_probe.h"

#include <dlfcn.h>
#include <memory>

namespace {

// Aligned, for the loader compares them with many names, twelve times a start: where a text crosses
// the end of a cache line, its strcmp goes byte by byte.
alignas(16) constexpr char kX11Library[] = "libX11.so.6";
alignas(16) constexpr char kOpenDisplay[] = "XOpenDisplay";
alignas(16) constexpr char kCloseDisplay[] = "XCloseDisplay";

// Not the plug-ins' loader: this library is opened in another mode.
struct CloseLibrary {
  void operator()(void* handle) const { ::dlclose(handle); }
};
using LibraryHandle = std::unique_ptr<void, CloseLibrary>;

// Success is what dlerror says, not the value that dlsym returned.
template <typename Function>
bool FindFunction(const LibraryHandle& library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(library.get(), name));
  return ::dlerror() == nullptr;
}

}  // namespace

bool ProbeXDisplay() {
  void* (*openDisplay)(const char* displayName);
  int (*closeDisplay)(void* display);

  const LibraryHandle x11(::dlopen(kX11Library, RTLD_LAZY));
  if (!x11) return false;
  if (!FindFunction(x11, kOpenDisplay, openDisplay)) return false;
  void* const display = openDisplay(nullptr);
  if (!display) return false;
  // Without a way to close it the connection is left open, and the display does not count.
  if (!FindFunction(x11, kCloseDisplay, closeDisplay)) return false;
  closeDisplay(display);
  return true;
}
