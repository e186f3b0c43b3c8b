#include "quality/blocks.h"

#include "quality/block_limits.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

// Runs of zeros and of ones, by their length; the last element has all longer ones.
struct Runs {
  std::uint32_t counts[2][kRunLengths] = {};
  std::uint32_t longest = 0;

  void Add(unsigned bit, std::uint32_t length) {
    ++counts[bit][std::min<std::uint32_t>(length, kRunLengths) - 1];
    longest = std::max(longest, length);
  }
};

std::uint32_t ReadWord(const unsigned char* bytes) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return __builtin_bswap32(word);  // the first bit of the first byte becomes the highest
}

// Looks for the places where a bit differs from the one before it.
Runs CountRuns(const unsigned char* bytes) {
  static_assert(kBlockSize % sizeof(std::uint32_t) == 0);
  Runs runs;
  std::uint32_t bit = bytes[0] >> 7;
  std::uint32_t previous = bit;  // so no run ends before the block begins
  std::uint32_t start = 0;
  for (std::uint32_t place = 0; place < kBlockBits; place += 32) {
    const std::uint32_t word = ReadWord(bytes + place / 8);
    for (std::uint32_t changes = word ^ (word >> 1 | previous << 31); changes != 0;) {
      const auto offset = static_cast<std::uint32_t>(std::countl_zero(changes));
      runs.Add(bit, place + offset - start);
      start = place + offset;
      bit ^= 1;
      changes &= ~(0x80000000U >> offset);
    }
    previous = word & 1;
  }
  runs.Add(bit, kBlockBits - start);
  return runs;
}

bool AreRunsUnusual(const Runs& runs) {
  for (const auto& counts : runs.counts) {
    for (std::size_t i = 0; i < kRunLengths; ++i) {
      if (counts[i] < kRunLimits[i].least || counts[i] > kRunLimits[i].most) return true;
    }
  }
  return false;
}

std::uint32_t CountOnes(const std::uint32_t (&digits)[16]) {
  std::uint32_t ones = 0;
  for (std::uint32_t digit = 0; digit < 16; ++digit) {
    ones += digits[digit] * static_cast<std::uint32_t>(std::popcount(digit));
  }
  return ones;
}

// The statistic is 16 / 5000 times the sum of the squares, less 5000. Multiplied by 5000 it is a whole
// number.
bool IsPokerUnusual(const std::uint32_t (&digits)[16]) {
  constexpr std::int64_t kDigits = kBlockBits / 4;
  std::int64_t squares = 0;
  for (const std::uint32_t count : digits) squares += std::int64_t{count} * count;
  const std::int64_t statistic = 16 * squares - kDigits * kDigits;
  return statistic * 100 <= kPokerLow * kDigits || statistic * 100 >= kPokerHigh * kDigits;
}

}  // namespace

BlockFailures TestBlock(const void* block) {
  const auto* const bytes = static_cast<const unsigned char*>(block);
  std::uint32_t digits[16] = {};
  for (std::size_t i = 0; i < kBlockSize; ++i) {
    ++digits[bytes[i] >> 4];
    ++digits[bytes[i] & 0xF];
  }
  const std::uint32_t ones = CountOnes(digits);
  const Runs runs = CountRuns(bytes);
  return {ones < kFewestOnes || ones > kMostOnes, IsPokerUnusual(digits), AreRunsUnusual(runs),
          runs.longest >= kLongRun};
}

void BlockTests::Feed(const void* bytes, std::size_t size) {
  const auto* next = static_cast<const unsigned char*>(bytes);
  const unsigned char* const end = next + size;
  while (next != end) {
    const auto left = static_cast<std::size_t>(end - next);
    if (beginning == 0 && left >= kBlockSize) {
      Count(next);
      next += kBlockSize;
      continue;
    }
    const std::size_t part = std::min(left, kBlockSize - beginning);
    std::memcpy(begun.data() + beginning, next, part);
    next += part;
    beginning = (beginning + part) % kBlockSize;
    if (beginning == 0) Count(begun.data());
  }
}

void BlockTests::Count(const void* block) {
  const BlockFailures found = TestBlock(block);
  ++blocks;
  failing += found.Any();
  monobit += found.monobit;
  poker += found.poker;
  runs += found.runs;
  longRun += found.longRun;
}
