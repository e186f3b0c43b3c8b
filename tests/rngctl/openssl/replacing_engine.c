// An engine that replaces OpenSSL's random-number generator.

#define OPENSSL_SUPPRESS_DEPRECATED

#include <openssl/engine.h>
#include <openssl/rand.h>
#include <string.h>

static int Fill(unsigned char* buffer, int size) {
  memset(buffer, 7, (size_t)size);
  return 1;
}

static int IsSeeded(void) { return 1; }

static RAND_METHOD method = {NULL, Fill, NULL, NULL, Fill, IsSeeded};

static int Bind(ENGINE* engine, const char* name) {
  (void)name;
  return ENGINE_set_id(engine, "replacing") && ENGINE_set_name(engine, "replacing") &&
         ENGINE_set_RAND(engine, &method);
}

IMPLEMENT_DYNAMIC_CHECK_FN()
IMPLEMENT_DYNAMIC_BIND_FN(Bind)
