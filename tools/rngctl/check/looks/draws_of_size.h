#ifndef TOOLS_RNGCTL_CHECK_LOOKS_DRAWS_OF_SIZE_H
#define TOOLS_RNGCTL_CHECK_LOOKS_DRAWS_OF_SIZE_H

#include <cstddef>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

/// The contents of a buffer before a draw and after it.
struct DrawnBytes {
  Bytes before;
  Bytes after;
};

inline constexpr std::size_t kDrawsOfSize = 7;

/// Draws of the same size, in the order in which they were made: seven, unless the source gave fewer.
struct DrawsOfSize {
  std::size_t size;
  std::vector<DrawnBytes> draws = {};
};

/// What is wrong with drawn bytes. The sentences have places, sizes and counts, but no drawn bytes.
struct Fault {
  std::string found;
  std::string fix;
};

/// Some of the bytes of a buffer: those from `begin` to `end`, which is not included.
struct Range {
  std::size_t begin;
  std::size_t end;
};

/// "byte 16", "bytes 1 to 16": people count from 1.
std::string InWords(const Range& range);

/// "the third draw of 255 bytes"; the first has the number 0.
std::string DrawInWords(std::size_t number, std::size_t size);

#endif
