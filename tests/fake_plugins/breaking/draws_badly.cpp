// What it draws does not look random. The macro WAY names the function below that spoils the bytes.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <cstdint>

namespace {

using Byte = unsigned char;

[[maybe_unused]] void ZeroHalf(Byte* bytes, std::size_t size) {
  std::memset(bytes + size - size / 2, 0, size / 2);
}

[[maybe_unused]] void ZeroHalfOf4096(Byte* bytes, std::size_t size) {
  if (size == 4096) ZeroHalf(bytes, size);
}

// The size of most keys.
[[maybe_unused]] void ZeroHalfOf32(Byte* bytes, std::size_t size) {
  if (size == 32) ZeroHalf(bytes, size);
}

// A fresh one for each draw.
[[maybe_unused]] void RepeatBlock(Byte* bytes, std::size_t size) {
  for (std::size_t i = 16; i < size; ++i) bytes[i] = bytes[i - 16];
}

[[maybe_unused]] void WriteHex(Byte* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes[i] = "0123456789abcdef"[bytes[i] % 16];
}

[[maybe_unused]] void Count(Byte* bytes, std::size_t size) {
  static std::atomic<Byte> next;
  for (std::size_t i = 0; i < size; ++i) bytes[i] = next++;
}

[[maybe_unused]] void CountWords(Byte* bytes, std::size_t size) {
  static std::atomic<std::uint32_t> next;
  for (std::size_t i = 0; i < size; i += sizeof(std::uint32_t)) {
    const std::uint32_t word = next++;
    std::memcpy(bytes + i, &word, size - i < sizeof word ? size - i : sizeof word);
  }
}

[[maybe_unused]] void ClearTopBit(Byte* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes[i] &= 0x7F;
}

[[maybe_unused]] void SetBit3(Byte* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes[i] |= 0x08;
}

// Bit 5 is 1 with a probability of 0.6.
[[maybe_unused]] void FavourBit5(Byte* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    Byte chance = 0;
    ::getrandom(&chance, sizeof chance, 0);
    bytes[i] = static_cast<Byte>((bytes[i] & ~0x20) | (chance < 154 ? 0x20 : 0));
  }
}

[[maybe_unused]] void OmitValue255(Byte* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes[i] %= 255;
}

std::uint64_t Mix(std::uint64_t value) {
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return value ^ (value >> 31);
}

// Bytes that look random, but begin again after 65,536.
[[maybe_unused]] void DrawPeriodically(Byte* bytes, std::size_t size) {
  static const std::uint64_t seed = [] {
    std::uint64_t random = 0;
    ::getrandom(&random, sizeof random, 0);
    return random;
  }();
  static std::atomic<std::uint16_t> next;
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<Byte>(Mix(seed + next++) >> 56);
}

// Bytes that are the same after each load, but not from the beginning.
[[maybe_unused]] void RepeatLate(Byte* bytes, std::size_t size) {
  static std::uint64_t next;
  if (size != 17) return;
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<Byte>(Mix(++next) >> 56);
}

class DrawsBadlyRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    auto* const bytes = static_cast<Byte*>(buffer);
    CorrectRng::Generate(bytes, size);
    WAY(bytes, size);
    return true;
  }
};

}  // namespace

EXPORT_RNG(DrawsBadlyRng)
