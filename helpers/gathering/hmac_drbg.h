#ifndef HELPERS_GATHERING_HMAC_DRBG_H
#define HELPERS_GATHERING_HMAC_DRBG_H

#include <array>
#include <string_view>

/// HMAC_DRBG with SHA-256, as defined in NIST SP 800-90A, section 10.1.2. It is never reseeded, because each draw has a
/// generator of its own. Needs no memory and never fails. The destructor wipes the state.
class HmacDrbg {
 public:
  /// `entropy`, with at least 256 bits of entropy, and `nonce` are the inputs of these names in the standard.
  HmacDrbg(std::string_view entropy, std::string_view nonce);
  HmacDrbg(const HmacDrbg&) = delete;
  HmacDrbg& operator=(const HmacDrbg&) = delete;
  ~HmacDrbg();

  /// Fills the buffer, with one request, as the standard defines it, for each 65,536 bytes.
  void Generate(void* buffer, std::size_t size, std::string_view additional = {});

 private:
  using Value = std::array<unsigned char, 32>;

  void GenerateRequest(unsigned char* buffer, std::size_t size, std::string_view additional);
  void Update(std::string_view first, std::string_view second = {});
  void UpdateKey(unsigned char round, std::string_view first, std::string_view second);
  void UpdateValue();

  Value key = {};
  Value value = {};
};

#endif
