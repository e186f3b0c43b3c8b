#ifndef TESTS_QUALITY_PEERS_BITS_H
#define TESTS_QUALITY_PEERS_BITS_H

#include "tests/quality/peers/streams.h"

#include <cstdint>
#include <random>

/// Good random numbers, the same in each run.
class Dice {
 public:
  std::uint64_t Draw() { return generator(); }
  std::size_t Below(std::size_t limit) { return Draw() % limit; }
  bool Happens(double probability) {
    return static_cast<double>(Draw() >> 11) < probability * 9007199254740992.0;  // 2^53
  }

 private:
  std::mt19937_64 generator{20260101};
};

/// Bytes that are written bit by bit, the most significant bit of a byte first.
class BitWriter {
 public:
  explicit BitWriter(std::size_t size) : bytes(size) {}
  bool IsFull() const { return place == 8 * bytes.size(); }
  void Add(bool bit) {
    if (bit) bytes[place / 8] |= static_cast<unsigned char>(0x80U >> place % 8);
    ++place;
  }
  void AddRun(bool bit, std::size_t length) {
    for (; length > 0 && !IsFull(); --length) Add(bit);
  }
  Bytes Take() { return std::move(bytes); }

 private:
  Bytes bytes;
  std::size_t place = 0;
};

#endif
