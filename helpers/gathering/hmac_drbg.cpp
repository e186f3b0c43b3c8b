#include "helpers/gathering/hmac_drbg.h"

#include "helpers/gathering/hmac.h"

#include <algorithm>
#include <cstring>
#include <openssl/crypto.h>

namespace {

constexpr std::size_t kLargestRequest = 65536;  // 2^19 bits

}  // namespace

HmacDrbg::HmacDrbg(std::string_view entropy, std::string_view nonce) {
  value.fill(1);
  Update(entropy, nonce);
}

HmacDrbg::~HmacDrbg() {
  OPENSSL_cleanse(key.data(), key.size());
  OPENSSL_cleanse(value.data(), value.size());
}

void HmacDrbg::Generate(void* buffer, std::size_t size, std::string_view additional) {
  auto* next = static_cast<unsigned char*>(buffer);
  while (size > 0) {
    const std::size_t part = std::min(size, kLargestRequest);
    GenerateRequest(next, part, additional);
    next += part;
    size -= part;
  }
}

void HmacDrbg::GenerateRequest(unsigned char* buffer, std::size_t size,
                               std::string_view additional) {
  if (!additional.empty()) Update(additional);
  for (std::size_t done = 0; done < size; done += value.size()) {
    UpdateValue();
    std::memcpy(buffer + done, value.data(), std::min(size - done, value.size()));
  }
  Update(additional);
}

void HmacDrbg::Update(std::string_view first, std::string_view second) {
  UpdateKey(0, first, second);
  UpdateValue();
  if (first.empty() && second.empty()) return;
  UpdateKey(1, first, second);
  UpdateValue();
}

void HmacDrbg::UpdateKey(unsigned char round, std::string_view first, std::string_view second) {
  Hmac<Sha256> hmac(key.data(), key.size());
  hmac.Add(value.data(), value.size());
  hmac.Add(&round, 1);
  hmac.Add(first.data(), first.size());
  hmac.Add(second.data(), second.size());
  hmac.Finish(key.data());
}

void HmacDrbg::UpdateValue() {
  Hmac<Sha256> hmac(key.data(), key.size());
  hmac.Add(value.data(), value.size());
  hmac.Finish(value.data());
}
