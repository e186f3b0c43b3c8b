#include "tools/rngctl/check/looks/sip_hash.h"

#include <bit>
#include <cstring>

namespace {

std::uint64_t Load(const unsigned char* bytes, std::size_t size = sizeof(std::uint64_t)) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, size);
  return word;
}

class State {
 public:
  explicit State(const SipKey& key)
      : v0(Load(key.data()) ^ 0x736f6d6570736575),
        v1(Load(key.data() + 8) ^ 0x646f72616e646f6d),
        v2(Load(key.data()) ^ 0x6c7967656e657261),
        v3(Load(key.data() + 8) ^ 0x7465646279746573) {}

  void Take(std::uint64_t word) {
    v3 ^= word;
    Round();
    Round();
    v0 ^= word;
  }

  std::uint64_t Finish() {
    v2 ^= 0xFF;
    for (int i = 0; i < 4; ++i) Round();
    return v0 ^ v1 ^ v2 ^ v3;
  }

 private:
  void Round() {
    v0 += v1;
    v2 += v3;
    v1 = std::rotl(v1, 13) ^ v0;
    v3 = std::rotl(v3, 16) ^ v2;
    v0 = std::rotl(v0, 32);
    v2 += v1;
    v0 += v3;
    v1 = std::rotl(v1, 17) ^ v2;
    v3 = std::rotl(v3, 21) ^ v0;
    v2 = std::rotl(v2, 32);
  }

  std::uint64_t v0;
  std::uint64_t v1;
  std::uint64_t v2;
  std::uint64_t v3;
};

}  // namespace

std::uint64_t SipHash(const SipKey& key, const void* bytes, std::size_t size) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  State state(key);
  const auto* place = static_cast<const unsigned char*>(bytes);
  std::size_t left = size;
  for (; left >= kWord; left -= kWord, place += kWord) state.Take(Load(place));
  state.Take(Load(place, left) | std::uint64_t{size} << 56);
  return state.Finish();
}
