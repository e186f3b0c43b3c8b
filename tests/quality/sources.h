#ifndef TESTS_QUALITY_SOURCES_H
#define TESTS_QUALITY_SOURCES_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

using Bytes = std::vector<unsigned char>;

/// Bytes without visible structure, always the same for a seed: a counter, mixed by two multiplications.
inline Bytes GoodBytes(std::size_t size, std::uint64_t seed = 1) {
  Bytes bytes(size);
  std::uint64_t counter = seed * 0xD1342543DE82EF95;  // far from those of other seeds
  for (std::size_t place = 0; place < size; place += sizeof counter) {
    std::uint64_t value = counter += 0x9E3779B97F4A7C15;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
    value ^= value >> 31;
    std::memcpy(bytes.data() + place, &value, std::min(size - place, sizeof value));
  }
  return bytes;
}

#endif
