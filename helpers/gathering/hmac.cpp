#include "helpers/gathering/hmac.h"

#include <openssl/core_names.h>
#include <openssl/params.h>
#include <stdexcept>
#include <string>

namespace {

template <typename Result>
Result Require(Result result) {
  if (!result) throw std::runtime_error("libcrypto cannot compute an HMAC");
  return result;
}

}  // namespace

HmacAlgorithm::HmacAlgorithm()
    : context(Require(OSSL_LIB_CTX_new())),
      algorithm(Require(EVP_MAC_fetch(context.get(), "HMAC", nullptr))) {}

Hmac::Hmac(const HmacAlgorithm& algorithm, const char* digest, const void* key, std::size_t size)
    : context(Require(EVP_MAC_CTX_new(algorithm.Get()))) {
  std::string name = digest;  // libcrypto takes a pointer to non-constant characters
  const OSSL_PARAM parameters[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, name.data(), 0),
      OSSL_PARAM_construct_end()};
  Require(EVP_MAC_init(context.get(), static_cast<const unsigned char*>(key), size, parameters));
}

void Hmac::Add(const void* bytes, std::size_t size) {
  Require(EVP_MAC_update(context.get(), static_cast<const unsigned char*>(bytes), size));
}

void Hmac::Finish(void* result, std::size_t size) {
  std::size_t written = 0;
  Require(EVP_MAC_final(context.get(), static_cast<unsigned char*>(result), &written, size));
  Require(written == size);
}
