#include "quality/restarts.h"

#include "tests/quality/sources.h"

#include <gtest/gtest.h>

namespace {

// What generators with these seeds draw first.
std::vector<FirstDraw> DrawWithSeeds(const std::vector<std::uint64_t>& seeds) {
  std::vector<FirstDraw> draws(seeds.size());
  for (std::size_t i = 0; i < seeds.size(); ++i) {
    const Bytes bytes = GoodBytes(sizeof(FirstDraw), seeds[i] + 1);
    std::copy(bytes.begin(), bytes.end(), draws[i].begin());
  }
  return draws;
}

std::vector<FirstDraw> DrawWithDifferentSeeds(std::size_t count) {
  std::vector<std::uint64_t> seeds(count);
  for (std::size_t i = 0; i < count; ++i) seeds[i] = i;
  return DrawWithSeeds(seeds);
}

}  // namespace

TEST(Restarts, FindNothingInAGoodGenerator) {
  EXPECT_FALSE(CompareFirstDraws(DrawWithDifferentSeeds(2), 1e-7).AreBeyondChance());
  EXPECT_FALSE(CompareFirstDraws(DrawWithDifferentSeeds(5000), 1e-7).AreBeyondChance());
}

TEST(Restarts, TwoEqualDrawsAreFound) {
  std::vector<std::uint64_t> seeds = {3, 1, 4, 0, 5, 9, 2, 6, 4, 8};
  const SharedBits found = CompareFirstDraws(DrawWithSeeds(seeds), 1e-7);
  EXPECT_TRUE(found.AreBeyondChance());
  EXPECT_EQ(128U, found.most);
  EXPECT_EQ(2U, found.first);
  EXPECT_EQ(8U, found.second);
}

TEST(Restarts, OfSeveralEqualDrawsTheFirstTwoAreNamed) {
  const SharedBits found = CompareFirstDraws(DrawWithSeeds({3, 1, 4, 0, 5, 4, 2, 4}), 1e-7);
  EXPECT_EQ(2U, found.first);
  EXPECT_EQ(5U, found.second);
}

TEST(Restarts, OfManyEqualDrawsTheFirstTwoAreNamed) {
  std::vector<std::uint64_t> seeds(1000);
  for (std::size_t i = 0; i < seeds.size(); ++i) seeds[i] = i < 100 ? i : 1000;
  const SharedBits found = CompareFirstDraws(DrawWithSeeds(seeds), 1e-7);
  EXPECT_EQ(100U, found.first);
  EXPECT_EQ(101U, found.second);
}

TEST(Restarts, TheEarlierDrawIsNamedFirst) {
  for (const bool isGreater : {false, true}) {
    std::vector<FirstDraw> draws = {{1}, {1}, {9}};
    draws[isGreater ? 0 : 1][15] = 1;
    const SharedBits found = CompareFirstDraws(draws, 1e-7);
    EXPECT_EQ(127U, found.most);
    EXPECT_EQ(0U, found.first);
    EXPECT_EQ(1U, found.second);
  }
}

TEST(Restarts, ASharedBeginningIsFound) {
  std::vector<FirstDraw> draws = DrawWithDifferentSeeds(200);
  std::copy_n(draws[150].begin(), 5, draws[20].begin());
  draws[20][5] = static_cast<unsigned char>(draws[150][5] ^ 0x80);  // so no further bit
  const SharedBits found = CompareFirstDraws(draws, 1e-7);
  EXPECT_EQ(40U, found.most);
  EXPECT_EQ(20U, found.first);
  EXPECT_EQ(150U, found.second);
  EXPECT_TRUE(found.AreBeyondChance());
}

// Two of so many draws may share 17 bits by chance.
TEST(Restarts, AShortBeginningOfAllDrawsIsFound) {
  std::vector<FirstDraw> draws = DrawWithDifferentSeeds(200);
  for (FirstDraw& draw : draws) draw[0] = 0x5A;
  const SharedBits found = CompareFirstDraws(draws, 1e-7);
  EXPECT_GT(found.limit, found.most);
  EXPECT_EQ(8U, found.common);
  EXPECT_TRUE(found.AreBeyondChance());
  draws[77][0] = 0xDA;  // one of them differs, in the first bit
  EXPECT_EQ(0U, CompareFirstDraws(draws, 1e-7).common);
  EXPECT_FALSE(CompareFirstDraws(draws, 1e-7).AreBeyondChance());
}

TEST(Restarts, FewDrawsMustShareMoreThanMany) {
  // 2^-33.2 is a thousandth of 1e-7.
  EXPECT_EQ(34U, CompareFirstDraws(DrawWithDifferentSeeds(2), 1e-7).commonLimit);
  EXPECT_EQ(9U, CompareFirstDraws(DrawWithDifferentSeeds(5), 1e-7).commonLimit);
  EXPECT_EQ(1U, CompareFirstDraws(DrawWithDifferentSeeds(200), 1e-7).commonLimit);
}

TEST(Restarts, TheLimitIsTheShortestBeginningThatChanceExcludes) {
  // 19,900 pairs: 2^37 = 1.374e11 is less than 19,900 / 1e-7 = 1.99e11, and 2^38 is more.
  EXPECT_EQ(38U, CompareFirstDraws(DrawWithDifferentSeeds(200), 1e-7).limit);
  EXPECT_EQ(24U, CompareFirstDraws(DrawWithDifferentSeeds(2), 1e-7).limit);
  EXPECT_EQ(128U, CompareFirstDraws(DrawWithDifferentSeeds(2), 1e-100).limit);
  // Not 10: a thousandth of 2^-10 is left for the beginning that all draws share.
  EXPECT_EQ(11U, CompareFirstDraws(DrawWithDifferentSeeds(2), 1.0 / 1024).limit);
}

TEST(Restarts, TheLimitKeepsItsPromise) {
  // With this false-alarm probability, at most 100 of 1,000 runs over 20 draws alarm, and half as many at
  // least, because the limit is a whole number of bits.
  int alarms = 0;
  for (std::uint64_t run = 0; run < 1000; ++run) {
    std::vector<std::uint64_t> seeds;
    for (std::uint64_t i = 0; i < 20; ++i) seeds.push_back(run * 20 + i);
    alarms += CompareFirstDraws(DrawWithSeeds(seeds), 0.1).AreBeyondChance();
  }
  EXPECT_GT(alarms, 25);
  EXPECT_LT(alarms, 130);
}

TEST(Restarts, AFewSeedsAreFound) {
  std::vector<std::uint64_t> seeds;
  for (std::uint64_t i = 0; i < 1000; ++i) seeds.push_back(i * i * 2654435761 >> 7 & 0xFFFF);
  EXPECT_TRUE(CompareFirstDraws(DrawWithSeeds(seeds), 1e-7).AreBeyondChance());
}

TEST(Restarts, KnowWhichSeedsTheyRuleOut) {
  EXPECT_EQ(0U, GetRuledOutSeedBits(0));
  EXPECT_EQ(0U, GetRuledOutSeedBits(2));  // two seeds: both draws may still differ
  EXPECT_EQ(1U, GetRuledOutSeedBits(3));
  EXPECT_EQ(12U, GetRuledOutSeedBits(200));
  EXPECT_EQ(16U, GetRuledOutSeedBits(777));
  EXPECT_EQ(16U, GetRuledOutSeedBits(1000));
  EXPECT_EQ(23U, GetRuledOutSeedBits(12000));
  EXPECT_EQ(24U, GetRuledOutSeedBits(12431));
}
