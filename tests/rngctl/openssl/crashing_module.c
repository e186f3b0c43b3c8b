// A module that crashes when OpenSSL loads it.

#include <stdlib.h>

__attribute__((visibility("default"))) int OSSL_provider_init(const void* core, const void* in,
                                                              const void** out, void** context);

int OSSL_provider_init(const void* core, const void* in, const void** out, void** context) {
  (void)core;
  (void)in;
  (void)out;
  (void)context;
  abort();
}
