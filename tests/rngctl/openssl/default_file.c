/* Preloaded: OpenSSL's own configuration is one in the test's directory. */

#include <openssl/crypto.h>
#include <stdio.h>
#include <stdlib.h>

char* CONF_get1_default_config_file(void) {
  char path[4096];
  snprintf(path, sizeof path, "%s/openssl.cnf", getenv("RNG_TEST_TREE"));
  return OPENSSL_strdup(path);
}
