// libcrypto deprecates these functions in favour of its general interface.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "helpers/gathering/hmac.h"

#include <openssl/crypto.h>
#include <stdexcept>

Sha256::Sha256() { SHA256_Init(&state); }
Sha256::~Sha256() { OPENSSL_cleanse(&state, sizeof state); }
void Sha256::Add(const void* bytes, std::size_t size) { SHA256_Update(&state, bytes, size); }
void Sha256::Finish(unsigned char* result) { SHA256_Final(result, &state); }

Sha512::Sha512() { SHA512_Init(&state); }
Sha512::~Sha512() { OPENSSL_cleanse(&state, sizeof state); }
void Sha512::Add(const void* bytes, std::size_t size) { SHA512_Update(&state, bytes, size); }
void Sha512::Finish(unsigned char* result) { SHA512_Final(result, &state); }

template <typename Hash>
Hmac<Hash>::Hmac(const void* key, std::size_t size) {
  if (size > Hash::kBlockSize) throw std::invalid_argument("the key of an HMAC is too long");
  const auto* const bytes = static_cast<const unsigned char*>(key);
  unsigned char innerKey[Hash::kBlockSize];
  unsigned char outerKey[Hash::kBlockSize];
  for (std::size_t i = 0; i < Hash::kBlockSize; ++i) {
    const unsigned char byte = i < size ? bytes[i] : 0;
    innerKey[i] = byte ^ 0x36;
    outerKey[i] = byte ^ 0x5C;
  }
  inner.Add(innerKey, sizeof innerKey);
  outer.Add(outerKey, sizeof outerKey);
  OPENSSL_cleanse(innerKey, sizeof innerKey);
  OPENSSL_cleanse(outerKey, sizeof outerKey);
}

template <typename Hash>
void Hmac<Hash>::Finish(unsigned char* result) {
  inner.Finish(result);
  outer.Add(result, Hash::kSize);
  outer.Finish(result);
}

template class Hmac<Sha256>;
template class Hmac<Sha512>;
