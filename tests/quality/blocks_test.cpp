#include "quality/blocks.h"

#include "quality/block_chance.h"
#include "quality/block_limits.h"
#include "quality/distributions.h"
#include "tests/quality/sources.h"

#include <gtest/gtest.h>
#include <map>
#include <numeric>

namespace {

using Bits = std::vector<bool>;

Bytes Pack(const Bits& bits) {
  Bytes bytes(bits.size() / 8);
  for (std::size_t i = 0; i < bits.size(); ++i) {
    if (bits[i]) bytes[i / 8] = static_cast<unsigned char>(bytes[i / 8] | 0x80 >> i % 8);
  }
  return bytes;
}

Bits Unpack(const Bytes& bytes) {
  Bits bits;
  for (const unsigned char byte : bytes) {
    for (int bit = 7; bit >= 0; --bit) bits.push_back((byte >> bit & 1) != 0);
  }
  return bits;
}

// Runs of zeros and ones in turn, so many of each length from 1 to 6; those of the last grow as needed.
Bytes BlockOfRuns(const std::vector<int>& counts) {
  Bits bits;
  int spare = 10000;
  for (int i = 0; i < 6; ++i) spare -= counts[static_cast<std::size_t>(i)] * (i + 1);
  for (int i = 0; i < 6; ++i) {
    for (int left = counts[static_cast<std::size_t>(i)]; left > 0; --left) {
      const int growth = i == 5 ? (spare + left - 1) / left : 0;
      spare -= growth;
      bits.insert(bits.end(), static_cast<std::size_t>(i + 1 + growth), false);
      bits.insert(bits.end(), static_cast<std::size_t>(i + 1 + growth), true);
    }
  }
  return Pack(bits);
}

// The tests once more, bit by bit, as the standard describes them.
BlockFailures Recount(const Bytes& block) {
  const Bits bits = Unpack(block);
  const auto ones = std::count(bits.begin(), bits.end(), true);
  double squares = 0;
  std::map<int, int> digits;
  for (std::size_t i = 0; i < bits.size(); i += 4) {
    ++digits[8 * bits[i] + 4 * bits[i + 1] + 2 * bits[i + 2] + bits[i + 3]];
  }
  for (const auto& [digit, count] : digits) squares += double(count) * count;
  const double poker = 16.0 / 5000 * squares - 5000;
  std::map<std::pair<bool, int>, int> runs;
  bool hasLongRun = false;
  for (std::size_t start = 0; start < bits.size();) {
    std::size_t end = start;
    while (end < bits.size() && bits[end] == bits[start]) ++end;
    ++runs[{bits[start], std::min<int>(static_cast<int>(end - start), 6)}];
    hasLongRun |= end - start >= 26;
    start = end;
  }
  bool areRunsUnusual = false;
  const int limits[][2] = {{2315, 2685}, {1114, 1386}, {527, 723},
                           {240, 384},   {103, 209},   {103, 209}};
  for (const bool bit : {false, true}) {
    for (int length = 1; length <= 6; ++length) {
      const int count = runs[{bit, length}];
      areRunsUnusual |= count < limits[length - 1][0] || count > limits[length - 1][1];
    }
  }
  return {ones <= 9725 || ones >= 10275, poker <= 2.16 || poker >= 46.17, areRunsUnusual,
          hasLongRun};
}

void ExpectSame(const BlockFailures& expected, const BlockFailures& seen) {
  EXPECT_EQ(expected.monobit, seen.monobit);
  EXPECT_EQ(expected.poker, seen.poker);
  EXPECT_EQ(expected.runs, seen.runs);
  EXPECT_EQ(expected.longRun, seen.longRun);
}

BlockFailures Judge(const Bytes& block) {
  EXPECT_EQ(kBlockSize, block.size());
  return TestBlock(block.data());
}

// The probability that the number of runs of ones of that length, or of at least the last length, is not within the
// limits. Looks at each bit in turn: [length of the run so far][number of runs that have ended].
double ChanceOfRuns(std::size_t length, const RunLimits& limits) {
  const std::size_t longest =
      length == kRunLengths ? length : length + 1;  // stands for longer ones, too
  using Cases = std::vector<std::vector<double>>;
  Cases cases(longest + 1, std::vector<double>(limits.most + 2));
  cases[0][0] = 1;
  const auto end = [length](const Cases& before, std::vector<double>& ended, double part) {
    for (std::size_t run = 0; run < before.size(); ++run) {
      const std::size_t more = run == length ? 1 : 0;
      for (std::size_t k = more; k < ended.size(); ++k) ended[k] += before[run][k - more] * part;
    }
  };
  for (std::uint32_t bit = 0; bit < kBlockBits; ++bit) {
    Cases next(longest + 1, std::vector<double>(limits.most + 2));
    end(cases, next[0], 0.5);
    for (std::size_t run = 0; run <= longest; ++run) {
      std::vector<double>& longer = next[std::min(run + 1, longest)];
      for (std::size_t k = 0; k < longer.size(); ++k) longer[k] += cases[run][k] / 2;
    }
    cases = std::move(next);
  }
  std::vector<double> ended(limits.most + 2);
  end(cases, ended, 1);
  return 1 - std::accumulate(ended.begin() + limits.least, ended.begin() + limits.most + 1, 0.0);
}

}  // namespace

TEST(Blocks, AGoodBlockPasses) { EXPECT_FALSE(Judge(GoodBytes(kBlockSize)).Any()); }

TEST(Blocks, AConstantBlockFailsEveryTest) {
  for (const int byte : {0, 0xFF}) {
    const BlockFailures found = Judge(Bytes(kBlockSize, static_cast<unsigned char>(byte)));
    EXPECT_TRUE(found.monobit && found.poker && found.runs && found.longRun);
  }
}

TEST(Blocks, MonobitHasTheLimitsOfTheStandard) {
  for (const auto& [ones, fails] :
       {std::pair{9725U, true}, {9726U, false}, {10274U, false}, {10275U, true}}) {
    Bits bits(20000);
    for (unsigned i = 0; i < ones; ++i) bits[i] = true;
    EXPECT_EQ(fails, Judge(Pack(bits)).monobit) << ones;
  }
}

TEST(Blocks, PokerHasTheLimitsOfTheStandard) {
  // The statistics closest to the limits: 2.1568, 2.1632, 46.1696 and 46.176.
  const std::pair<bool, std::vector<int>> cases[] = {
      {true, {296, 305, 317, 320, 316, 313, 305, 317, 312, 317, 320, 313, 305, 311, 319, 314}},
      {false, {331, 306, 315, 313, 319, 308, 315, 305, 312, 319, 306, 315, 312, 306, 308, 310}},
      {false, {221, 334, 302, 330, 305, 341, 321, 331, 307, 340, 284, 324, 300, 338, 285, 337}},
      {true, {211, 314, 346, 307, 344, 332, 323, 330, 312, 308, 307, 298, 333, 329, 298, 308}}};
  for (const auto& [fails, counts] : cases) {
    Bits bits;
    for (unsigned digit = 0; digit < 16; ++digit) {
      for (int i = 0; i < counts[digit]; ++i) {
        for (const unsigned bit : {8U, 4U, 2U, 1U}) bits.push_back((digit & bit) != 0);
      }
    }
    EXPECT_EQ(fails, Judge(Pack(bits)).poker) << counts[0];
  }
}

TEST(Blocks, RunsHaveTheLimitsOfTheStandard) {
  const std::vector<int> usual = {2380, 1200, 625, 312, 156, 156};
  ASSERT_FALSE(Judge(BlockOfRuns(usual)).runs);
  const int limits[][2] = {{2315, 2685}, {1114, 1386}, {527, 723},
                           {240, 384},   {103, 209},   {103, 209}};
  for (std::size_t i = 0; i < 6; ++i) {
    for (const auto& [count, fails] : {std::pair{limits[i][0] - 1, true},
                                       {limits[i][0], false},
                                       {limits[i][1], false},
                                       {limits[i][1] + 1, true}}) {
      std::vector<int> counts = usual;
      counts[i] = count;
      EXPECT_EQ(fails, Judge(BlockOfRuns(counts)).runs) << count << " of length " << i + 1;
    }
  }
}

TEST(Blocks, ARunOf26BitsIsTooLongWhereverItIs) {
  for (const std::size_t start : {0UL, 7UL, 32UL, 9990UL, 20000UL - 26}) {
    Bits bits = Unpack(GoodBytes(kBlockSize));
    for (std::size_t i = start; i < start + 26; ++i) bits[i] = true;
    if (start > 0) bits[start - 1] = false;
    if (start + 26 < bits.size()) bits[start + 26] = false;
    EXPECT_TRUE(Judge(Pack(bits)).longRun) << start;
    bits[start] = false;
    EXPECT_FALSE(Judge(Pack(bits)).longRun) << start;
  }
}

TEST(Blocks, AreJudgedAsTheStandardTellsBitByBit) {
  for (std::uint64_t seed = 0; seed < 160; ++seed) {
    Bytes block = GoodBytes(kBlockSize, seed);
    // Seven of every eight blocks are spoilt, each in its own way, and later ones more.
    const auto ever = static_cast<std::size_t>(800 / (seed + 1) + 1);
    for (std::size_t i = 0; i < block.size(); i += ever) {
      const auto next = static_cast<unsigned char>(block[(i + 1) % kBlockSize]);
      const unsigned char spoilt[] = {block[i], next, 0, 0xFF, 0x55, 0x0F, 0x33, 'a'};
      block[i] = spoilt[seed % 8];
    }
    ExpectSame(Recount(block), Judge(block));
  }
}

TEST(BlockTests, CountWhichTestsFail) {
  BlockTests tests;
  const Bytes good = GoodBytes(2 * kBlockSize);
  const Bytes bad(kBlockSize, 0x55);  // as many ones as zeros, in runs of one bit
  tests.Feed(good.data(), good.size());
  tests.Feed(bad.data(), bad.size());
  EXPECT_EQ(3U, tests.blocks);
  EXPECT_EQ(1U, tests.failing);
  EXPECT_EQ(0U, tests.monobit);
  EXPECT_EQ(1U, tests.poker);
  EXPECT_EQ(1U, tests.runs);
  EXPECT_EQ(0U, tests.longRun);
}

TEST(BlockTests, CountEachTestForItself) {
  Bytes hasLongRun = GoodBytes(kBlockSize);
  std::fill_n(hasLongRun.begin() + 1000, 4, static_cast<unsigned char>(0));
  Bytes hasFrequentDigits = GoodBytes(kBlockSize);  // with as many ones, in runs of usual lengths
  for (std::size_t i = 0; i < kBlockSize; i += 20) hasFrequentDigits[i] = 0x1B;
  BlockTests tests;
  for (const Bytes& block : {hasLongRun, hasFrequentDigits}) tests.Feed(block.data(), block.size());
  EXPECT_EQ(2U, tests.failing);
  EXPECT_EQ(0U, tests.monobit);
  EXPECT_EQ(1U, tests.poker);
  EXPECT_EQ(0U, tests.runs);
  EXPECT_EQ(1U, tests.longRun);
}

TEST(BlockTests, DoNotDependOnThePieces) {
  Bytes bytes = GoodBytes(3 * kBlockSize + 100);
  std::fill_n(bytes.begin() + kBlockSize, kBlockSize, static_cast<unsigned char>(7));
  for (const std::size_t piece : {1UL, 7UL, 2499UL, 2500UL, 2501UL, 4000UL, 6000UL}) {
    BlockTests tests;
    for (std::size_t i = 0; i < bytes.size(); i += piece) {
      tests.Feed(bytes.data() + i, std::min(piece, bytes.size() - i));
    }
    EXPECT_EQ(3U, tests.blocks) << piece;
    EXPECT_EQ(1U, tests.failing) << piece;
  }
}

TEST(BlockChances, AreThoseThatTheStandardWasMadeFor) {
  const BlockChances chances = GetBlockChances();
  EXPECT_NEAR(1e-4, chances.monobit, 0.05e-4);
  EXPECT_NEAR(1e-4, chances.poker, 0.05e-4);
  EXPECT_NEAR(3e-4, chances.runs, 0.05e-4);
  EXPECT_NEAR(3e-4, chances.longRun, 0.05e-4);
  EXPECT_NEAR(8e-4, chances.Any(), 0.1e-4);
}

TEST(BlockChances, OfALongRunIsExact) {
  // [i]: the probability that the bits so far end with a run of i bits.
  std::vector<double> ending(26, 0.0);
  ending[1] = 1;
  for (int bit = 1; bit < 20000; ++bit) {
    const double half = std::accumulate(ending.begin(), ending.end(), 0.0) / 2;
    for (std::size_t i = 25; i > 1; --i) ending[i] = ending[i - 1] / 2;
    ending[1] = half;
  }
  const double chance = 1 - std::accumulate(ending.begin(), ending.end(), 0.0);
  EXPECT_NEAR(1, GetBlockChances().longRun / chance, 1e-8);
}

TEST(BlockChances, OfRunsAreExact) {
  double chance = 0;
  for (std::size_t i = 0; i < kRunLengths; ++i) chance += ChanceOfRuns(i + 1, kRunLimits[i]);
  EXPECT_NEAR(1, GetBlockChances().runs / (2 * chance), 1e-6);
}

TEST(BlockChances, AreThoseOfAGoodGenerator) {
  BlockTests tests;
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    const Bytes bytes = GoodBytes(100 * kBlockSize, seed);
    tests.Feed(bytes.data(), bytes.size());
  }
  // 16 of 20,000 are expected.
  const double chance = GetBlockChances().Any();
  EXPECT_GT(GetBinomialTail(tests.blocks, chance, tests.failing), 0.001) << tests.failing;
  EXPECT_LT(GetBinomialTail(tests.blocks, chance, tests.failing), 0.999) << tests.failing;
}

TEST(BlockChances, FourFailuresInAThousandAreNothingAndTenAreTooMany) {
  const double chance = GetBlockChances().Any();
  EXPECT_GT(GetBinomialTail(1000, chance, 4), 0.005);
  EXPECT_LT(GetBinomialTail(1000, chance, 10), 3e-8);
  EXPECT_EQ(9U, GetMostFailingBlocks(1000, chance, 1e-7));
  EXPECT_EQ(0U, GetMostFailingBlocks(1, chance, 0.001));
  EXPECT_EQ(1U, GetMostFailingBlocks(1, chance, 0.0001));
}
