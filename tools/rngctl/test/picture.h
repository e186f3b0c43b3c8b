#ifndef TOOLS_RNGCTL_TEST_PICTURE_H
#define TOOLS_RNGCTL_TEST_PICTURE_H

#include "tools/rngctl/process/forked/secret_bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// Bytes as a picture, so that structure shows to the eye.
///
/// The left half shows the first 65,536 bytes, 256 to a line, from black for 0 to white for 255, and blue where
/// none were drawn. The right half shows how often, in all bytes, each value (from the left) is followed by each
/// value (from the top). The expected frequency is grey; eight standard deviations above it is white, and eight
/// below it is black. Random bytes look like noise in both halves.
class Picture {
 public:
  static constexpr std::size_t kSide = 256;  ///< of each half, in values
  static constexpr std::size_t kScale = 2;   ///< the pixels for a value, in both directions
  static constexpr std::size_t kGap = 16;    ///< the pixels between the halves
  static constexpr std::size_t kHeight = kSide * kScale;
  static constexpr std::size_t kWidth = 2 * kHeight + kGap;

  void Feed(const char* bytes, std::size_t size);

  /// The picture as a PNG file. Throws a `Refusal`.
  SecretBytes AsPng() const;

 private:
  struct Pixel {
    unsigned char red;
    unsigned char green;
    unsigned char blue;
  };
  Pixel ByteAt(std::size_t line, std::size_t column) const;
  Pixel PairAt(std::size_t line, std::size_t column) const;
  Pixel PixelAt(std::size_t line, std::size_t column) const;

  SecretBytes first;  // at most as many as are shown
  std::array<std::uint64_t, kSide* kSide> pairs = {};
  std::uint64_t count = 0;  // of all bytes
  unsigned char last = 0;
};

#endif
