#ifndef HELPERS_GATHERING_HMAC_H
#define HELPERS_GATHERING_HMAC_H

#include <cstddef>
#include <memory>
#include <openssl/evp.h>

/// libcrypto's HMAC. It has its own library context, so neither a configuration file nor an environment variable
/// replaces the algorithm. Throws a `std::runtime_error` on failure, which only a lack of memory causes.
class HmacAlgorithm {
 public:
  HmacAlgorithm();
  EVP_MAC* Get() const { return algorithm.get(); }

 private:
  struct Free {
    void operator()(OSSL_LIB_CTX* object) const { OSSL_LIB_CTX_free(object); }
    void operator()(EVP_MAC* mac) const { EVP_MAC_free(mac); }
  };
  std::unique_ptr<OSSL_LIB_CTX, Free> context;
  std::unique_ptr<EVP_MAC, Free> algorithm;
};

/// One computation. The algorithm must outlive it.
class Hmac {
 public:
  /// `digest` is libcrypto's name of the hash function, for example "SHA512".
  Hmac(const HmacAlgorithm& algorithm, const char* digest, const void* key, std::size_t size);

  void Add(const void* bytes, std::size_t size);

  /// Writes the result, which must be `size` bytes long. Nothing may be added after that.
  void Finish(void* result, std::size_t size);

 private:
  struct Free {
    void operator()(EVP_MAC_CTX* object) const { EVP_MAC_CTX_free(object); }  // wipes it, too
  };
  std::unique_ptr<EVP_MAC_CTX, Free> context;
};

#endif
