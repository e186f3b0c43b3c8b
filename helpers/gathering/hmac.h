#ifndef HELPERS_GATHERING_HMAC_H
#define HELPERS_GATHERING_HMAC_H

#include <cstddef>
#include <openssl/sha.h>

/// A hash function of libcrypto. Called directly: libcrypto's general interface reads the configuration of OpenSSL first,
/// even with a library context of its own. That may load modules into the process, or draw random bytes from
/// the generators that this project serves. Needs no memory and never fails. The destructors wipe the state.
class Sha256 {
 public:
  static constexpr std::size_t kSize = 32;
  static constexpr std::size_t kBlockSize = 64;

  Sha256();
  Sha256(const Sha256&) = delete;
  Sha256& operator=(const Sha256&) = delete;
  ~Sha256();
  void Add(const void* bytes, std::size_t size);
  void Finish(unsigned char* result);

 private:
  SHA256_CTX state;
};

/// Likewise.
class Sha512 {
 public:
  static constexpr std::size_t kSize = 64;
  static constexpr std::size_t kBlockSize = 128;

  Sha512();
  Sha512(const Sha512&) = delete;
  Sha512& operator=(const Sha512&) = delete;
  ~Sha512();
  void Add(const void* bytes, std::size_t size);
  void Finish(unsigned char* result);

 private:
  SHA512_CTX state;
};

/// HMAC (RFC 2104), for keys that are at most as long as a block of the hash function.
template <typename Hash>
class Hmac {
 public:
  Hmac(const void* key, std::size_t size);
  void Add(const void* bytes, std::size_t size) { inner.Add(bytes, size); }

  /// Writes `Hash::kSize` bytes. Nothing may be added after that.
  void Finish(unsigned char* result);

 private:
  Hash inner;
  Hash outer;
};

extern template class Hmac<Sha256>;
extern template class Hmac<Sha512>;

#endif
