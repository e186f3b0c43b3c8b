// An OpenSSL provider without any algorithm.

#include <openssl/core.h>
#include <openssl/core_dispatch.h>

static int module;

static void TearDown(void* provider) { (void)provider; }

static const OSSL_DISPATCH functions[] = {
    {OSSL_FUNC_PROVIDER_TEARDOWN, (void (*)(void))TearDown},
    {0, NULL},
};

__attribute__((visibility("default"))) int OSSL_provider_init(const OSSL_CORE_HANDLE* handle,
                                                              const OSSL_DISPATCH* in,
                                                              const OSSL_DISPATCH** out,
                                                              void** provider) {
  (void)handle, (void)in;
  *out = functions;
  *provider = &module;
  return 1;
}
