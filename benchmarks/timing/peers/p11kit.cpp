#include "benchmarks/timing/module_timing.h"
#include "benchmarks/timing/peers/peers.h"

#include <cstdlib>
#include <p11-kit/p11-kit.h>
#include <stdexcept>

namespace {

void Start(const std::vector<std::string>& paths) {
  // A null-terminated list, which p11-kit frees. It closes modules only in lists.
  auto** const modules =
      static_cast<CK_FUNCTION_LIST**>(std::calloc(paths.size() + 1, sizeof(CK_FUNCTION_LIST*)));
  for (std::size_t i = 0; i < paths.size(); ++i) {
    modules[i] = ::p11_kit_module_load(paths[i].c_str(), 0);
    if (!modules[i] || ::p11_kit_module_initialize(modules[i]) != CKR_OK) {
      throw std::runtime_error("p11-kit did not load " + paths[i]);
    }
  }
  ::p11_kit_modules_finalize(modules);
  ::p11_kit_modules_release(modules);
}

}  // namespace

void RegisterP11Kit() { RegisterModulePeer("p11-kit", PKCS11_MODULE, Start); }
