#include "benchmarks/timing/number_timing.h"
#include "benchmarks/timing/peers/peers.h"

#include <openssl/rand.h>
#include <stdexcept>

void RegisterOpenSslRandom() {
  RegisterNumberPeer("RAND_bytes", [] {
    unsigned char bytes[8];
    if (::RAND_bytes(bytes, sizeof bytes) != 1) throw std::runtime_error("RAND_bytes failed");
    asm volatile("" : : "r"(bytes) : "memory");
  });
}
