// The macro FILL makes its bytes. They are the same in each process.

#include "tests/fake_plugins/correct_rng.h"

namespace {

// Bytes without visible structure.
unsigned char NextGood() {
  static std::uint64_t counter = 0;
  std::uint64_t value = counter += 0x9E3779B97F4A7C15;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return static_cast<unsigned char>((value ^ (value >> 31)) >> 24);
}

void Good(unsigned char* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes[i] = NextGood();
}

[[maybe_unused]] void Counter(unsigned char* bytes, std::size_t size) {
  static unsigned char next = 0;
  for (std::size_t i = 0; i < size; ++i) bytes[i] = next++;
}

[[maybe_unused]] void Ascii(unsigned char* bytes, std::size_t size) {
  Good(bytes, size);
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<unsigned char>("0123456789abcdef"[bytes[i] & 0xF]);
  }
}

[[maybe_unused]] void StuckBit(unsigned char* bytes, std::size_t size) {
  Good(bytes, size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] |= 0x04;
}

// In 51 % of the bytes: of the zeros, one in fifty becomes a one.
[[maybe_unused]] void LeaningBit(unsigned char* bytes, std::size_t size) {
  Good(bytes, size);
  for (std::size_t i = 0; i < size; ++i) {
    if ((NextGood() << 8 | NextGood()) < 65536 / 50) bytes[i] |= 0x20;
  }
}

[[maybe_unused]] void ShortPeriod(unsigned char* bytes, std::size_t size) {
  static unsigned char period[1000];
  static std::size_t place = 0;
  if (place == 0) Good(period, sizeof period);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = period[place++ % sizeof period];
}

[[maybe_unused]] void Constant(unsigned char* bytes, std::size_t size) {
  std::memset(bytes, 0xA5, size);
}

[[maybe_unused]] void HalfZeros(unsigned char* bytes, std::size_t size) {
  Good(bytes, size);
  std::memset(bytes + size / 2, 0, size - size / 2);
}

// The rest keeps what the caller had there.
[[maybe_unused]] void HalfFilled(unsigned char* bytes, std::size_t size) { Good(bytes, size / 2); }

class BadSource final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    FILL(static_cast<unsigned char*>(buffer), size);
    return true;
  }
};

}  // namespace

EXPORT_RNG(BadSource)
