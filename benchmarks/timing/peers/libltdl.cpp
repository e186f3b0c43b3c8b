#include "benchmarks/timing/module_timing.h"
#include "benchmarks/timing/peers/peers.h"

#include <ltdl.h>
#include <stdexcept>

namespace {

void Start(const std::vector<std::string>& paths) {
  ::lt_dlinit();
  std::vector<lt_dlhandle> modules;
  for (const std::string& path : paths) {
    lt_dlhandle const module = ::lt_dlopen(path.c_str());
    void* const factory = module ? ::lt_dlsym(module, "GetModule") : nullptr;
    if (!factory || !reinterpret_cast<void* (*)()>(factory)()) {
      throw std::runtime_error(::lt_dlerror());
    }
    modules.push_back(module);
  }
  for (lt_dlhandle module : modules) ::lt_dlclose(module);
  ::lt_dlexit();
}

}  // namespace

void RegisterLibltdl() { RegisterModulePeer("libltdl", BARE_MODULE, Start); }
