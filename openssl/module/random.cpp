// The provider's random-number generator. It buffers nothing: each request is a draw from the chosen generator.

#include "openssl/module/parameters.h"
#include "openssl/module/provider.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>
#include <openssl/core_names.h>
#include <openssl/evp.h>

namespace {

constexpr unsigned kStrength = 256;  // bits

// OpenSSL creates several in a program: the primary one, and two for each thread.
struct Random {
  Provider& provider;
  std::atomic<int> state;
};

// A DRBG would be seeded from the parent. This generator needs no seed.
void* NewRandom(void* provider, void* /*parent*/, const OSSL_DISPATCH* /*parentFunctions*/) {
  void* const memory = std::malloc(sizeof(Random));
  return memory ? new (memory)
                      Random{*static_cast<Provider*>(provider), EVP_RAND_STATE_UNINITIALISED}
                : nullptr;
}

void FreeRandom(void* random) { std::free(random); }

// Draws nothing, so that a program that needs no random bytes starts no helper.
int Instantiate(void* random, unsigned strength, int /*predictionResistance*/,
                const unsigned char* /*personalisation*/, std::size_t, const OSSL_PARAM*) {
  if (strength > kStrength) return 0;
  static_cast<Random*>(random)->state = EVP_RAND_STATE_READY;
  return 1;
}

int Uninstantiate(void* random) {
  static_cast<Random*>(random)->state = EVP_RAND_STATE_UNINITIALISED;
  return 1;
}

// Additional input and prediction resistance are for DRBGs.
int Generate(void* random, unsigned char* out, std::size_t size, unsigned strength,
             int /*predictionResistance*/, const unsigned char* /*additional*/, std::size_t) {
  Random& self = *static_cast<Random*>(random);
  if (self.state != EVP_RAND_STATE_READY || strength > kStrength) return 0;
  return self.provider.Draw(out, size) ? 1 : 0;
}

// There is no seed: every draw is fresh.
int Reseed(void*, int, const unsigned char*, std::size_t, const unsigned char*, std::size_t) {
  return 1;
}

// OpenSSL first passes a null buffer to ask for the size. It allocates that many bytes, and calls again with that as
// the least size.
std::size_t Nonce(void* random, unsigned char* out, unsigned strength, std::size_t least,
                  std::size_t most) {
  const std::size_t size = std::max<std::size_t>(least, strength / CHAR_BIT);
  if (size > most) return 0;
  return !out || Generate(random, out, size, strength, 0, nullptr, 0) ? size : 0;
}

// Nothing to do: the only state of an instance is an atomic flag, and `Connection` has a lock of its own.
int EnableLocking(void*) { return 1; }

const OSSL_PARAM* DescribeParameters(void* /*random*/, void* /*provider*/) {
  static const OSSL_PARAM kDescription[] = {
      {OSSL_RAND_PARAM_STATE, OSSL_PARAM_INTEGER, nullptr, sizeof(int), OSSL_PARAM_UNMODIFIED},
      {OSSL_RAND_PARAM_STRENGTH, OSSL_PARAM_UNSIGNED_INTEGER, nullptr, sizeof(unsigned),
       OSSL_PARAM_UNMODIFIED},
      {OSSL_RAND_PARAM_MAX_REQUEST, OSSL_PARAM_UNSIGNED_INTEGER, nullptr, sizeof(std::size_t),
       OSSL_PARAM_UNMODIFIED},
      {nullptr, 0, nullptr, 0, 0}};
  return kDescription;
}

int GetParameters(void* random, OSSL_PARAM parameters[]) {
  const int state = static_cast<Random*>(random)->state;
  return SetNumber(FindParameter(parameters, OSSL_RAND_PARAM_STATE),
                   static_cast<unsigned>(state)) &&
         SetNumber(FindParameter(parameters, OSSL_RAND_PARAM_STRENGTH), kStrength) &&
         SetNumber(FindParameter(parameters, OSSL_RAND_PARAM_MAX_REQUEST), INT_MAX);
}

}  // namespace

const OSSL_DISPATCH kRandomFunctions[] = {
    Entry(OSSL_FUNC_RAND_NEWCTX, NewRandom),
    Entry(OSSL_FUNC_RAND_FREECTX, FreeRandom),
    Entry(OSSL_FUNC_RAND_INSTANTIATE, Instantiate),
    Entry(OSSL_FUNC_RAND_UNINSTANTIATE, Uninstantiate),
    Entry(OSSL_FUNC_RAND_GENERATE, Generate),
    Entry(OSSL_FUNC_RAND_RESEED, Reseed),
    Entry(OSSL_FUNC_RAND_NONCE, Nonce),
    Entry(OSSL_FUNC_RAND_ENABLE_LOCKING, EnableLocking),
    Entry(OSSL_FUNC_RAND_GETTABLE_CTX_PARAMS, DescribeParameters),
    Entry(OSSL_FUNC_RAND_GET_CTX_PARAMS, GetParameters),
    {0, nullptr}};
