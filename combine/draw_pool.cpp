#include "combine/draw_pool.h"

#include "helpers/gathering/hmac_drbg.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// So that no other use of the generator gives the same bytes, whatever its input is.
constexpr char kPurpose[] = "rngaggregator combined draw 1";

}  // namespace

unsigned char* DrawPool::Add(std::size_t size) {
  for (std::size_t i = kPrefixSize; i-- > 0;) {
    bytes.push_back(static_cast<unsigned char>(std::uint64_t{size} >> (8 * i)));
  }
  bytes.resize(bytes.size() + size);
  return bytes.data() + bytes.size() - size;
}

void DrawPool::Add(const std::string& part) {
  std::copy(part.begin(), part.end(), Add(part.size()));
}

void DrawPool::TakeBack(std::size_t size) {
  ::explicit_bzero(bytes.data() + size, bytes.size() - size);
  bytes.resize(size);
}

void DrawPool::Expand(void* buffer, std::size_t size) const {
  const std::string_view input(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  HmacDrbg(input, kPurpose).Generate(buffer, size);
}
