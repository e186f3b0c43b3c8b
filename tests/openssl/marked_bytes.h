#ifndef TESTS_OPENSSL_MARKED_BYTES_H
#define TESTS_OPENSSL_MARKED_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Bytes that a test recognises, although they pass the checks of draws: in each 16 of them, the second half follows
/// from the first.
struct MarkedBlock {
  std::uint64_t first;
  std::uint64_t second;
};
static_assert(sizeof(MarkedBlock) == 16);

constexpr std::uint64_t kMark = 0x9E3779B97F4A7C15;

/// Whether these bytes, from the beginning of a draw, are marked. Only whole blocks count; false if there is none.
inline bool AreMarked(const void* bytes, std::size_t size) {
  for (std::size_t done = 0; done + sizeof(MarkedBlock) <= size; done += sizeof(MarkedBlock)) {
    MarkedBlock block;
    std::memcpy(&block, static_cast<const char*>(bytes) + done, sizeof block);
    if (block.second != (block.first ^ kMark)) return false;
  }
  return size >= sizeof(MarkedBlock);
}

#endif
