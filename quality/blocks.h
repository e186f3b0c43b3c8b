#ifndef QUALITY_BLOCKS_H
#define QUALITY_BLOCKS_H

#include <array>
#include <cstddef>
#include <cstdint>

/// The four tests of FIPS 140-2 (with its change notice 1), each over a block of 20,000 bits. The most
/// significant bit of a byte is its first.
constexpr std::size_t kBlockSize = 2500;

/// Which tests a block fails.
struct BlockFailures {
  bool monobit;  ///< too many ones, or too few
  bool poker;    ///< the 16 values of half a byte are too unequally frequent, or too equally
  bool runs;     ///< too many or too few runs of equal bits of some length
  bool longRun;  ///< a run of 26 equal bits or more

  bool Any() const { return monobit || poker || runs || longRun; }
};

/// Tests the `kBlockSize` bytes at `block`.
BlockFailures TestBlock(const void* block);

/// How many blocks of a stream failed. An incomplete block at its end is not tested.
class BlockTests {
 public:
  void Feed(const void* bytes, std::size_t size);

  std::uint64_t blocks = 0;
  std::uint64_t failing = 0;  ///< in at least one test
  std::uint64_t monobit = 0;
  std::uint64_t poker = 0;
  std::uint64_t runs = 0;
  std::uint64_t longRun = 0;

 private:
  void Count(const void* block);

  std::array<unsigned char, kBlockSize> begun;  // a block whose end has not come yet
  std::size_t beginning = 0;                    // the bytes of it that are here
};

#endif
