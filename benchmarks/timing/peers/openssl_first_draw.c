// A program that draws a key's worth of random bytes, with the configuration of OpenSSL in force.

#include <openssl/rand.h>

int main(void) {
  unsigned char bytes[32];
  return RAND_bytes(bytes, sizeof bytes) == 1 ? 0 : 1;
}
