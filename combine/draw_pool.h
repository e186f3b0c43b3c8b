#ifndef COMBINE_DRAW_POOL_H
#define COMBINE_DRAW_POOL_H

#include <cstddef>
#include <string>
#include <vector>

/// The input of one combined draw: parts with their lengths in front, so that no two lists of parts are the same
/// bytes. It is wiped when it ends, and when a part is taken back.
class DrawPool {
 public:
  /// `capacity` is enough for all parts, with `kPrefixSize` bytes more for each: if the pool had to grow, it would leave
  /// a copy behind.
  explicit DrawPool(std::size_t capacity) { bytes.reserve(capacity); }
  DrawPool(const DrawPool&) = delete;
  DrawPool& operator=(const DrawPool&) = delete;
  ~DrawPool() { TakeBack(0); }

  static constexpr std::size_t kPrefixSize = 8;

  void Add(const std::string& part);

  /// Adds a part of zeros, for the caller to fill.
  unsigned char* Add(std::size_t size);

  std::size_t Size() const { return bytes.size(); }

  /// Removes what was added after the pool had this size.
  void TakeBack(std::size_t size);

  /// Fills the buffer with what follows from the parts.
  void Expand(void* buffer, std::size_t size) const;

 private:
  std::vector<unsigned char> bytes;
};

#endif
