#include "providers/dll_loader.h"

#include <dlfcn.h>
#include <utility>

namespace rngshared {
namespace smartwr {

DllLoader::DllLoader(const char* fileName) : handle(::dlopen(fileName, RTLD_LAZY | RTLD_GLOBAL)) {}

DllLoader::~DllLoader() { Unload(); }

void* DllLoader::Load(const char* fileName) {
  Unload();
  handle = ::dlopen(fileName, RTLD_LAZY);
  return handle;
}

void DllLoader::Unload() {
  if (void* const held = Detach()) ::dlclose(held);
}

void* DllLoader::Detach() { return std::exchange(handle, nullptr); }

}  // namespace smartwr
}  // namespace rngshared
