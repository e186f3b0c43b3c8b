#include "tests/quality/peers/limits.h"

#include "quality/block_limits.h"
#include "quality/blocks.h"
#include "tests/quality/peers/bits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace {

template <typename Value>
void Shuffle(Dice& dice, std::vector<Value>& values) {
  for (std::size_t i = values.size(); i > 1; --i) std::swap(values[i - 1], values[dice.Below(i)]);
}

using MakeBlock = std::function<void(Dice&, BitWriter&, std::size_t number)>;

Stream ByBlocks(const std::string& name, const MakeBlock& make) {
  return {name, [make](std::size_t blocks) {
            Dice dice;
            Bytes bytes;
            for (std::size_t number = 0; number < blocks; ++number) {
              BitWriter bits(kBlockSize);
              make(dice, bits, number);
              const Bytes block = bits.Take();
              bytes.insert(bytes.end(), block.begin(), block.end());
            }
            return bytes;
          }};
}

// Exactly so many ones.
void MakeOnes(Dice& dice, BitWriter& bits, std::size_t number) {
  constexpr std::uint32_t kOnes[] = {kFewestOnes - 1, kFewestOnes, kFewestOnes + 1,
                                     kMostOnes - 1,   kMostOnes,   kMostOnes + 1};
  std::vector<char> all(kBlockBits, 0);
  std::fill_n(all.begin(), kOnes[number % std::size(kOnes)], 1);
  Shuffle(dice, all);
  for (const char bit : all) bits.Add(bit);
}

// Counts of the sixteen digits whose squares have exactly that sum. It is even, like their number.
std::array<std::int64_t, 16> FindCounts(Dice& dice, std::int64_t squares) {
  std::array<std::int64_t, 16> counts;
  counts.fill(kBlockBits / 4 / 16);
  for (int i = 0; i < 8; ++i) ++counts[static_cast<std::size_t>(i)];  // 5,000 is no multiple of 16
  const auto sum = [&counts] {
    return std::inner_product(counts.begin(), counts.end(), counts.begin(), std::int64_t{0});
  };
  for (std::int64_t reached = sum(); reached != squares; reached = sum()) {
    auto moved = counts;
    --moved[dice.Below(16)];
    ++moved[dice.Below(16)];
    std::swap(counts, moved);
    if (std::abs(sum() - squares) > std::abs(reached - squares) && dice.Below(10) != 0)
      counts = moved;
  }
  return counts;
}

// A poker statistic that is the least or the most allowed, or the next one beyond.
void MakeDigits(Dice& dice, BitWriter& bits, std::size_t number) {
  constexpr std::int64_t kSquares[] = {1563174, 1563176, 1576928, 1576930};
  const auto counts = FindCounts(dice, kSquares[number % std::size(kSquares)]);
  std::vector<unsigned> digits;
  for (unsigned digit = 0; digit < 16; ++digit) {
    digits.insert(digits.end(), static_cast<std::size_t>(counts[digit]), digit);
  }
  Shuffle(dice, digits);
  for (const unsigned digit : digits) {
    for (unsigned bit = 8; bit > 0; bit /= 2) bits.Add(digit & bit);
  }
}

// A run of so many bits, at the beginning, at the end, or within the block.
void MakeLongRun(Dice& dice, BitWriter& bits, std::size_t number) {
  const std::size_t length = 24 + number % 4;
  const bool bit = number / 4 % 2;
  const std::size_t places[] = {0, kBlockBits - length, 1 + dice.Below(kBlockBits - length - 1)};
  const std::size_t start = places[number / 8 % 3];
  for (std::size_t place = 0; place < kBlockBits; ++place) {
    if (place == start) {
      bits.AddRun(bit, length);
      place += length - 1;
    } else {
      const bool isBeside = place + 1 == start || place == start + length;
      bits.Add(isBeside ? !bit : dice.Happens(0.5));
    }
  }
}

// About as many runs of this length, of each bit, as the limit allows. The others are as in a true generator.
Stream ByRuns(const std::string& name, std::size_t length, double count) {
  const bool isLast = length == kRunLengths;  // that length and all above
  const double share =
      std::ldexp(1, isLast ? 1 - static_cast<int>(length) : -static_cast<int>(length));
  const double size = static_cast<double>(length) + (isLast ? 1 : 0);
  const double sizeOfOthers = (2 - share * size) / (1 - share);
  // From 10,000 bits = runs * (wanted * size + (1 - wanted) * sizeOfOthers), and count = wanted * runs.
  const double wanted = count * sizeOfOthers / (10000 - count * (size - sizeOfOthers));
  return ByBlocks(name, [=](Dice& dice, BitWriter& bits, std::size_t) {
    for (bool bit = dice.Happens(0.5); !bits.IsFull(); bit = !bit) {
      std::size_t run = length;
      if (!dice.Happens(wanted)) {
        do {
          for (run = 1; dice.Happens(0.5);) ++run;
        } while (std::min(run, kRunLengths) == length);
      } else if (isLast) {
        while (dice.Happens(0.5)) ++run;
      }
      bits.AddRun(bit, run);
    }
  });
}

}  // namespace

void AddLimits(std::vector<Stream>& streams) {
  streams.push_back(ByBlocks("limit_of_ones", MakeOnes));
  streams.push_back(ByBlocks("limit_of_digits", MakeDigits));
  streams.push_back(ByBlocks("limit_of_a_run", MakeLongRun));
  for (std::size_t length = 1; length <= kRunLengths; ++length) {
    const RunLimits limits = kRunLimits[length - 1];
    const std::string name = "runs_of_" + std::to_string(length);
    streams.push_back(ByRuns(name + "_few", length, limits.least));
    streams.push_back(ByRuns(name + "_many", length, limits.most));
  }
}
