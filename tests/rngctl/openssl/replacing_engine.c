// An engine that replaces OpenSSL's random-number generator. Its draws succeed, but leave an error like those of our
// provider.

#define OPENSSL_SUPPRESS_DEPRECATED

#include <openssl/engine.h>
#include <openssl/err.h>
#include <openssl/rand.h>
#include <string.h>

static ERR_STRING_DATA reasons[] = {{1, "no random bytes"}, {0, NULL}};

static void LeaveError(void) {
  const int library = ERR_get_next_error_library();
  ERR_load_strings(library, reasons);
  ERR_raise_data(library, 1, "The engine has tried twice.");
}

static int Fill(unsigned char* buffer, int size) {
  LeaveError();
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
