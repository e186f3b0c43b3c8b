#include "quality/byte_statistics.h"

#include "quality/distributions.h"
#include "tests/quality/sources.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

ByteStatistics Count(const Bytes& bytes) {
  ByteStatistics statistics;
  statistics.Feed(bytes.data(), bytes.size());
  return statistics;
}

Bytes Counter(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i);
  return bytes;
}

// As in the textbook, without care for large numbers.
double CorrelateNeighbours(const Bytes& bytes) {
  double sum = 0;
  double squares = 0;
  double products = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const double value = bytes[i];
    sum += value;
    squares += value * value;
    products += value * bytes[(i + 1) % bytes.size()];
  }
  const auto size = static_cast<double>(bytes.size());
  return (size * products - sum * sum) / (size * squares - sum * sum);
}

}  // namespace

TEST(ByteStatistics, SaysNothingAboutFewBytes) {
  EXPECT_FALSE(Count(GoodBytes(4095)).GetChiSquare());
  EXPECT_FALSE(Count(GoodBytes(4095)).GetSerialCorrelation());
  EXPECT_TRUE(Count(GoodBytes(4096)).GetChiSquare());
  EXPECT_TRUE(Count(GoodBytes(4096)).GetSerialCorrelation());
  EXPECT_FALSE(Count({}).GetBitFrequency(0));
}

TEST(ByteStatistics, FindsNothingInGoodBytes) {
  const ByteStatistics statistics = Count(GoodBytes(1 << 20));
  EXPECT_GT(statistics.GetChiSquare()->probability, 0.001);
  EXPECT_GT(statistics.GetSerialCorrelation()->probability, 0.001);
  for (unsigned bit = 0; bit < 8; ++bit) {
    EXPECT_GT(statistics.GetBitFrequency(bit)->probability, 0.001) << bit;
  }
}

TEST(ByteStatistics, EqualBytesAreAsUnequalAsPossible) {
  const ByteStatistics statistics = Count(Bytes(4096, 7));
  EXPECT_DOUBLE_EQ(255.0 * 4096, statistics.GetChiSquare()->value);
  EXPECT_EQ(0, statistics.GetChiSquare()->probability);
  EXPECT_EQ(1, statistics.GetSerialCorrelation()->value);
  EXPECT_EQ(0, statistics.GetSerialCorrelation()->probability);
}

TEST(ByteStatistics, ACounterIsTooEqual) {
  const ByteStatistics statistics = Count(Counter(4096));
  EXPECT_EQ(0, statistics.GetChiSquare()->value);
  EXPECT_LT(statistics.GetChiSquare()->probability, 1e-100);
  EXPECT_LT(statistics.GetSerialCorrelation()->probability, 1e-100);
  EXPECT_EQ(1, statistics.GetBitFrequency(3)->probability);
}

TEST(ByteStatistics, CorrelatesEachByteWithTheNext) {
  for (const Bytes& bytes : {GoodBytes(5000, 3), Counter(5000)}) {
    EXPECT_NEAR(CorrelateNeighbours(bytes), Count(bytes).GetSerialCorrelation()->value, 1e-12);
  }
  Bytes inTurn = Bytes(4096, 10);
  for (std::size_t i = 0; i < inTurn.size(); i += 2) inTurn[i] = 200;
  EXPECT_NEAR(-1, Count(inTurn).GetSerialCorrelation()->value, 1e-12);
}

// 128 values come 20 times and 128 come 12 times: each adds 4 * 4 / 16.
TEST(ByteStatistics, TheProbabilityOfChiSquareIsThatOf255DegreesOfFreedom) {
  Bytes bytes = Counter(4096);
  for (std::size_t i = 0; i < 1024; ++i) bytes[i] &= 0x7F;
  const Statistic chiSquare = Count(bytes).GetChiSquare().value();
  EXPECT_DOUBLE_EQ(256, chiSquare.value);
  EXPECT_DOUBLE_EQ(GetChiSquareTails(256, 255), chiSquare.probability);
}

// The mean is a little less than zero.
TEST(ByteStatistics, TheProbabilityOfACorrelationIsThatOfItsDistanceFromTheMean) {
  const Bytes bytes = GoodBytes(4096, 3);
  const double value = CorrelateNeighbours(bytes);
  EXPECT_NEAR(GetNormalTails(64 * (value + 1.0 / 4095)),
              Count(bytes).GetSerialCorrelation()->probability, 1e-9);
}

TEST(ByteStatistics, DoesNotDependOnThePieces) {
  const Bytes bytes = GoodBytes(10000);
  const ByteStatistics whole = Count(bytes);
  ByteStatistics pieces;
  for (std::size_t i = 0; i < bytes.size(); i += 7) {
    pieces.Feed(bytes.data() + i, 0);
    pieces.Feed(bytes.data() + i, std::min<std::size_t>(7, bytes.size() - i));
  }
  EXPECT_EQ(whole.Size(), pieces.Size());
  EXPECT_EQ(whole.Counts(), pieces.Counts());
  EXPECT_EQ(whole.GetSerialCorrelation()->value, pieces.GetSerialCorrelation()->value);
}

TEST(ByteStatistics, CountsTheOnesOfEachBit) {
  const ByteStatistics statistics = Count({0x80, 0x81, 0x01, 0x80});
  EXPECT_EQ(3U, statistics.CountOnes(7));
  EXPECT_EQ(2U, statistics.CountOnes(0));
  EXPECT_EQ(0U, statistics.CountOnes(4));
  EXPECT_EQ(0.75, statistics.GetBitFrequency(7)->value);
  EXPECT_DOUBLE_EQ(0.125, statistics.GetBitFrequency(4)->probability);  // four heads or four tails
}

TEST(ByteStatistics, FindsABitThatIsOneMoreOften) {
  Bytes bytes = GoodBytes(1 << 20);
  const Bytes chance = GoodBytes(1 << 20, 2);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (chance[i] < 5)
      bytes[i] |= 0x10;  // one of two in fifty: the bit is one in 51 % of the bytes
  }
  const ByteStatistics statistics = Count(bytes);
  EXPECT_NEAR(0.51, statistics.GetBitFrequency(4)->value, 0.002);
  EXPECT_LT(statistics.GetBitFrequency(4)->probability, 1e-50);
  EXPECT_GT(statistics.GetBitFrequency(3)->probability, 1e-3);
}

// 10 % of the values are that extreme, if the probabilities are right.
TEST(ByteStatistics, ProbabilitiesAreThoseOfAGoodSource) {
  int chiSquares = 0;
  int correlations = 0;
  int bits = 0;
  for (std::uint64_t seed = 1; seed <= 2000; ++seed) {
    const ByteStatistics statistics = Count(GoodBytes(kFewestBytes, seed));
    chiSquares += statistics.GetChiSquare()->probability < 0.1;
    correlations += statistics.GetSerialCorrelation()->probability < 0.1;
    bits += statistics.GetBitFrequency(0)->probability < 0.1;
  }
  EXPECT_NEAR(200, chiSquares, 45);
  EXPECT_NEAR(200, correlations, 45);
  EXPECT_NEAR(200, bits, 45);
}
