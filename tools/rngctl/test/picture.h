#ifndef TOOLS_RNGCTL_TEST_PICTURE_H
#define TOOLS_RNGCTL_TEST_PICTURE_H

#include "tools/rngctl/process/forked/secret_bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// Bytes as a picture, so that structure shows to the eye.
///
/// Left: the first 65,536 bytes, line by line, 256 to a line, black for 0 and white for 255; blue where none
/// were drawn. Right: how often each byte (from the left) is followed by each other (from the top), in all
/// bytes. Grey is as often as chance has it; eight standard deviations more are white, and as many less
/// are black. Random bytes give noise on both sides.
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
