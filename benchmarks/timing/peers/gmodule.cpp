#include "benchmarks/timing/module_timing.h"
#include "benchmarks/timing/peers/peers.h"

#include <gmodule.h>
#include <stdexcept>

namespace {

void Start(const std::vector<std::string>& paths) {
  std::vector<GModule*> modules;
  for (const std::string& path : paths) {
    GModule* const module = ::g_module_open(path.c_str(), G_MODULE_BIND_LAZY);
    gpointer factory = nullptr;
    if (!module || !::g_module_symbol(module, "GetModule", &factory) ||
        !reinterpret_cast<void* (*)()>(factory)()) {
      throw std::runtime_error(::g_module_error());
    }
    modules.push_back(module);
  }
  for (GModule* module : modules) ::g_module_close(module);
}

}  // namespace

void RegisterGModule() { RegisterModulePeer("GModule", BARE_MODULE, Start); }
