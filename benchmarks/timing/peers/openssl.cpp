#include "benchmarks/timing/module_timing.h"
#include "benchmarks/timing/peers/peers.h"

#include <memory>
#include <openssl/crypto.h>
#include <openssl/provider.h>
#include <stdexcept>

namespace {

struct FreeContext {
  void operator()(OSSL_LIB_CTX* context) const { ::OSSL_LIB_CTX_free(context); }
};

void Start(const std::vector<std::string>& paths) {
  // A separate context, so that the next start loads the providers again.
  const std::unique_ptr<OSSL_LIB_CTX, FreeContext> context(::OSSL_LIB_CTX_new());
  std::vector<OSSL_PROVIDER*> providers;
  for (const std::string& path : paths) {
    OSSL_PROVIDER* const provider = ::OSSL_PROVIDER_load(context.get(), path.c_str());
    if (!provider) throw std::runtime_error("OpenSSL did not load " + path);
    providers.push_back(provider);
  }
  for (OSSL_PROVIDER* provider : providers) ::OSSL_PROVIDER_unload(provider);
}

}  // namespace

void RegisterOpenSsl() { RegisterModulePeer("OpenSSL providers", OPENSSL_MODULE, Start); }
