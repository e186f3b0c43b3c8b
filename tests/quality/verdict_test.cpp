#include "quality/verdict.h"

#include "quality/block_chance.h"
#include "quality/distributions.h"
#include "tests/quality/sources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>

using testing::Contains;
using testing::ElementsAre;

namespace {

QualityVerdict JudgeBytes(const Bytes& bytes) {
  StreamTests stream(bytes.size());
  stream.Feed(bytes.data(), bytes.size());
  return Judge(stream, {});
}

std::vector<QualityTest> TestsWith(QualityOutcome outcome, const QualityVerdict& verdict) {
  std::vector<QualityTest> tests;
  for (const QualityResult& result : verdict.results) {
    if (result.outcome == outcome) tests.push_back(result.test);
  }
  return tests;
}

std::vector<QualityTest> Failed(const Bytes& bytes) {
  return TestsWith(QualityOutcome::kFailed, JudgeBytes(bytes));
}

std::vector<QualityTest> NotMade(const Bytes& bytes) {
  return TestsWith(QualityOutcome::kNotMade, JudgeBytes(bytes));
}

}  // namespace

TEST(Verdict, GoodBytesPassEveryTest) {
  const QualityVerdict verdict = JudgeBytes(GoodBytes(1 << 20));
  EXPECT_EQ(0U, verdict.CountFailed());
  EXPECT_EQ(kQualityTests, verdict.results.size());
  EXPECT_THAT(NotMade(GoodBytes(1 << 20)), ElementsAre(QualityTest::kRestarts));
}

TEST(Verdict, ATestIsNotMadeWithTooFewBytes) {
  EXPECT_EQ(kQualityTests, NotMade({}).size());
  EXPECT_THAT(NotMade(GoodBytes(4095)),
              ElementsAre(QualityTest::kBlocks, QualityTest::kByteFrequencies,
                          QualityTest::kSerialCorrelation, QualityTest::kRestarts));
  EXPECT_THAT(NotMade(GoodBytes(4096)), ElementsAre(QualityTest::kBlocks, QualityTest::kRestarts));
  EXPECT_THAT(NotMade(GoodBytes(3 * kBlockSize - 1)),
              ElementsAre(QualityTest::kBlocks, QualityTest::kRestarts));
  EXPECT_THAT(NotMade(GoodBytes(3 * kBlockSize)), ElementsAre(QualityTest::kRestarts));
}

// A test that passes although every block fails would mislead.
TEST(Verdict, BlocksAreTestedOnlyIfTheyCanFail) {
  const double chance = GetBlockChances().Any();
  EXPECT_EQ(2U, GetMostFailingBlocks(2, chance, kFalseAlarmOfTest));
  EXPECT_EQ(2U, GetMostFailingBlocks(kFewestBlocks, chance, kFalseAlarmOfTest));
  EXPECT_THAT(Failed(Bytes(3 * kBlockSize)), Contains(QualityTest::kBlocks));
}

TEST(Verdict, NamesTheTestsThatFail) {
  Bytes repeated = GoodBytes(1 << 16);
  std::fill_n(repeated.begin() + 60000, 9, static_cast<unsigned char>(0));
  EXPECT_THAT(Failed(repeated), ElementsAre(QualityTest::kRepetition));

  Bytes copied = GoodBytes(1 << 16);
  std::copy_n(copied.begin() + 1600, 16, copied.begin() + 1616);
  EXPECT_THAT(Failed(copied), ElementsAre(QualityTest::kRepetition));

  Bytes frequent = GoodBytes(1 << 16);  // one value is more frequent, for a short time
  for (std::size_t i = 512; i < 1024; i += 16) frequent[i] = frequent[512];
  EXPECT_THAT(Failed(frequent), ElementsAre(QualityTest::kProportion));

  Bytes biased = GoodBytes(1 << 20);  // one bit is one in 51 % of the bytes
  const Bytes chance = GoodBytes(1 << 20, 2);
  for (std::size_t i = 0; i < biased.size(); ++i) {
    if (chance[i] < 5) biased[i] |= 0x10;
  }
  EXPECT_THAT(Failed(biased),
              ElementsAre(QualityTest::kBitFrequencies, QualityTest::kByteFrequencies));
}

TEST(Verdict, SomeBlocksMayFailAndMoreMayNot) {
  Bytes bytes = GoodBytes(1000 * kBlockSize);
  const auto spoil = [&bytes](std::size_t block) {
    for (std::size_t i = 0; i < 4; ++i) bytes[block * kBlockSize + i] = 0;
  };
  for (std::size_t i = 0; i < 4; ++i) spoil(100 * i);
  EXPECT_EQ(9U, JudgeBytes(bytes).mostFailingBlocks);
  EXPECT_EQ(0U, JudgeBytes(bytes).CountFailed());
  for (std::size_t i = 0; i < 11; ++i) spoil(50 * i);
  EXPECT_THAT(Failed(bytes), ElementsAre(QualityTest::kBlocks));
}

// Each fails on its own in some of the spoilt blocks, not only by a long run.
TEST(Verdict, ABlockFailsByAnyOfItsTests) {
  Bytes bytes = GoodBytes(100 * kBlockSize);
  EXPECT_EQ(QualityOutcome::kPassed, JudgeBytes(bytes).results.front().outcome);
  for (std::size_t i = 0; i < bytes.size(); i += 10) bytes[i] = 0x55;
  StreamTests stream(bytes.size());
  stream.Feed(bytes.data(), bytes.size());
  ASSERT_LT(stream.blocks.longRun, 5U);
  EXPECT_EQ(QualityOutcome::kFailed, Judge(stream, {}).results.front().outcome);
}

TEST(Verdict, TheProbabilityOfTheBitsIsThatOfTheWorstOfEight) {
  Bytes bytes(1000);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = i % 2 == 0 ? 0xFF : 0;
  for (std::size_t i = 1; i < 100; i += 2) bytes[i] = 0x10;  // bit 4 is one in 550 bytes
  const QualityResult bits = JudgeBytes(bytes).results[3];
  ASSERT_EQ(QualityTest::kBitFrequencies, bits.test);
  EXPECT_DOUBLE_EQ(8 * GetCoinTails(1000, 550), bits.probability.value());
}

TEST(Verdict, NoProbabilityIsAboveOne) {
  Bytes bytes(1000, 0xFF);
  std::fill_n(bytes.begin(), 500, static_cast<unsigned char>(0));  // all bits are half ones
  EXPECT_EQ(1, JudgeBytes(bytes).results[3].probability.value());
}

TEST(Verdict, AnEmptyStreamHasTheCutoffsOfOneByte) {
  const StreamTests none(0);
  const StreamTests one(1);
  EXPECT_EQ(one.cutoffs.repetitions, none.cutoffs.repetitions);
  EXPECT_EQ(one.cutoffs.proportion, none.cutoffs.proportion);
}

TEST(Verdict, FirstDrawsHaveTheLimitOfTheirShare) {
  const StreamTests none(0);
  const std::vector<FirstDraw> draws = {{1}, {2}};
  // 2^23 = 8.4e6 is less than 1 / kFalseAlarmOfTest = 1.4e7, and 2^24 is more.
  EXPECT_EQ(24U, Judge(none, draws).shared.value().limit);
}

TEST(Verdict, FirstDrawsAreJudgedFromTwoOn) {
  const StreamTests none(0);
  const FirstDraw one = {1};
  const FirstDraw other = {2};
  EXPECT_EQ(QualityOutcome::kNotMade, Judge(none, {one}).results.back().outcome);
  EXPECT_EQ(QualityOutcome::kPassed, Judge(none, {one, other}).results.back().outcome);
  EXPECT_EQ(QualityOutcome::kFailed, Judge(none, {one, other, one}).results.back().outcome);
}

TEST(Verdict, TheSharesOfTheTestsLeaveRoom) {
  EXPECT_LE(kFalseAlarmOfTest * kQualityTests, kFalseAlarmOfRun / 2 * 1.0000001);
  const StreamTests whole(64 << 20);
  EXPECT_EQ(8U, whole.cutoffs.repetitions);  // at any of 2^26 places: 2^26 / 2^56
  EXPECT_LT(std::ldexp(1, 26 - 8 * 7), kFalseAlarmOfTest);
}

TEST(Verdict, GoodBytesOfAnySizePass) {
  for (std::uint64_t seed = 0; seed < 500; ++seed) {
    const Bytes bytes = GoodBytes(seed * 37, seed + 1);
    StreamTests stream(bytes.size());
    stream.Feed(bytes.data(), bytes.size());
    for (const std::optional<Statistic>& statistic :
         {stream.bytes.GetChiSquare(), stream.bytes.GetSerialCorrelation()}) {
      EXPECT_GT(statistic ? statistic->probability : 1, kFalseAlarmOfTest) << seed;
    }
    EXPECT_EQ(RngHealthAlarm::kNone, stream.repetition.Alarm()) << seed;
    EXPECT_EQ(RngHealthAlarm::kNone, stream.proportion.Alarm()) << seed;
  }
}
