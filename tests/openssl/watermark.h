#ifndef TESTS_OPENSSL_WATERMARK_H
#define TESTS_OPENSSL_WATERMARK_H

#include <cstddef>
#include <cstdint>
#include <cstring>

/// A watermark by which a test recognises bytes that still pass the checks of draws: in each block of 16 bytes, the
/// second half is computed from the first.
struct WatermarkedBlock {
  std::uint64_t first;
  std::uint64_t second;
};
static_assert(sizeof(WatermarkedBlock) == 16);

constexpr std::uint64_t kWatermark = 0x9E3779B97F4A7C15;

/// Whether all whole blocks of these bytes, which begin with the beginning of a draw, have the watermark. False if there
/// is no whole block.
inline bool HaveWatermark(const void* bytes, std::size_t size) {
  for (std::size_t done = 0; done + sizeof(WatermarkedBlock) <= size;
       done += sizeof(WatermarkedBlock)) {
    WatermarkedBlock block;
    std::memcpy(&block, static_cast<const char*>(bytes) + done, sizeof block);
    if (block.second != (block.first ^ kWatermark)) return false;
  }
  return size >= sizeof(WatermarkedBlock);
}

#endif
