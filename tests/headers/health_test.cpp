// The tests of health.h against their definitions, counted byte by byte.

#include <gtest/gtest.h>
#include <random>

#include <rngaggregator/health.h>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr RngHealthCutoffs kGoodBytes = {9, 23, 512, true};
constexpr RngHealthCutoffs kNothingElse = {1000, 1000, 512, false};

// The definitions, over a whole stream.
RngHealthAlarm FindAlarm(const Bytes& stream, const RngHealthCutoffs& cutoffs) {
  std::uint32_t run = 0;
  std::uint32_t count = 0;
  std::uint32_t equal = 0;
  for (std::size_t i = 0; i < stream.size(); ++i) {
    RngHealthAlarm alarm = RngHealthAlarm::kNone;
    run = i > 0 && stream[i] == stream[i - 1] ? run + 1 : 1;
    if (run >= cutoffs.repetitions) alarm = RngHealthAlarm::kRepetition;
    if (i % cutoffs.window == 0) count = 0;
    count += stream[i] == stream[i / cutoffs.window * cutoffs.window];
    if (count >= cutoffs.proportion) alarm = RngHealthAlarm::kProportion;
    equal = i >= 16 && stream[i] == stream[i - 16] ? equal + 1 : 0;
    if (cutoffs.comparesBlocks && equal >= 16) alarm = RngHealthAlarm::kBlock;
    if (alarm != RngHealthAlarm::kNone) return alarm;
  }
  return RngHealthAlarm::kNone;
}

class Source {
 public:
  explicit Source(std::uint64_t seed) : generator(seed) {}
  std::size_t Below(std::size_t limit) { return generator() % limit; }
  Bytes Draw(std::size_t size) {
    Bytes bytes(size);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(generator() >> 32);
    return bytes;
  }

 private:
  std::mt19937_64 generator;
};

// Good bytes with some defects: few bits, a run, a repetition of what came 16 bytes before.
Bytes DrawWithDefects(Source& source) {
  Bytes bytes = source.Draw(17 + source.Below(1500));
  const auto bits = static_cast<unsigned char>((1U << (1 + source.Below(8))) - 1);
  if (source.Below(3) == 0) {
    for (unsigned char& byte : bytes) byte &= bits;
  }
  const auto copy = [&](std::size_t distance, std::size_t longest) {
    std::size_t place = distance + source.Below(bytes.size() - distance);
    for (std::size_t i = source.Below(longest); i > 0 && place < bytes.size(); --i, ++place) {
      bytes[place] = bytes[place - distance];
    }
  };
  if (source.Below(3) == 0) copy(1, 20);
  if (source.Below(3) == 0) copy(16, 24);
  return bytes;
}

bool Passes(const Bytes& bytes, const RngHealthCutoffs& cutoffs) {
  return RngHealthTest(cutoffs).Feed(bytes.data(), bytes.size());
}

}  // namespace

// Known answers: for the proportion, exact sums of the binomial distribution with rational numbers.
TEST(HealthCutoffs, AreThoseOfTheStandard) {
  struct Answer {
    double minEntropy;
    int logFalseAlarm;
    std::uint32_t repetitions;
    std::uint32_t window;
    std::uint32_t proportion;
  };
  for (const Answer& answer :
       {Answer{8, -30, 5, 512, 16}, Answer{7, -30, 6, 512, 22}, Answer{4, -30, 9, 512, 71},
        Answer{1, -30, 31, 512, 325}, Answer{1, -20, 21, 512, 311}, Answer{1, -30, 31, 64, 56}}) {
    const RngHealthCutoffs cutoffs = GetRngHealthCutoffs(
        answer.minEntropy, std::ldexp(1.0, answer.logFalseAlarm), answer.window);
    EXPECT_EQ(answer.repetitions, cutoffs.repetitions) << answer.minEntropy;
    EXPECT_EQ(answer.proportion, cutoffs.proportion) << answer.minEntropy;
    EXPECT_EQ(answer.window, cutoffs.window);
    EXPECT_FALSE(cutoffs.comparesBlocks);
  }
}

TEST(HealthTest, DecidesAsTheDefinitionsDoHoweverTheStreamIsCut) {
  Source source(1);
  std::map<RngHealthAlarm, int> alarms;
  for (int i = 0; i < 3000; ++i) {
    const RngHealthCutoffs cutoffs = {static_cast<std::uint32_t>(5 + source.Below(8)),
                                      static_cast<std::uint32_t>(4 + source.Below(20)),
                                      static_cast<std::uint32_t>(16 * (1 + source.Below(64))),
                                      source.Below(2) == 0};
    RngHealthTest test(cutoffs);
    Bytes stream;
    for (int piece = 0; piece < 4 && test.Alarm() == RngHealthAlarm::kNone; ++piece) {
      const Bytes bytes = DrawWithDefects(source);
      stream.insert(stream.end(), bytes.begin(), bytes.end());
      const bool isGood = test.Feed(bytes.data(), bytes.size());
      ASSERT_EQ(isGood, test.Alarm() == RngHealthAlarm::kNone);
      ASSERT_EQ(FindAlarm(stream, cutoffs), test.Alarm()) << "stream " << i;
    }
    ++alarms[test.Alarm()];
  }
  EXPECT_EQ(4U, alarms.size());  // all of them came up
  for (const auto& [alarm, count] : alarms) EXPECT_LT(100, count) << static_cast<int>(alarm);
}

TEST(HealthTest, EachTestAloneHasItsExactCutoff) {
  for (const std::size_t size : {8UL, 9UL}) {
    EXPECT_EQ(size < 9, Passes(Bytes(size, 7), {9, 1000, 512, false})) << size;
  }
  for (const std::size_t equal : {22UL, 23UL}) {
    Bytes window;
    for (std::size_t i = 0; i < 512; ++i) {
      window.push_back(i % 2 == 0 && i / 2 < equal ? 1 : static_cast<unsigned char>(2 + i % 200));
    }
    EXPECT_EQ(equal < 23, Passes(window, {1000, 23, 512, false})) << equal;
  }
  for (const std::size_t equal : {15UL, 16UL}) {
    Bytes bytes = Source(2).Draw(4096);
    std::copy_n(bytes.begin() + 1000, equal, bytes.begin() + 1016);
    bytes[1016 + equal] = static_cast<unsigned char>(bytes[1000 + equal] + 1);
    EXPECT_EQ(equal < 16, Passes(bytes, {1000, 1000, 512, true})) << equal;
  }
}

TEST(HealthTest, SeesNineEqualBytesWhereverTheyBeginAndNoFewer) {
  Source source(3);
  for (std::size_t place = 1; place < 1100; ++place) {
    for (const std::size_t size : {8UL, 9UL}) {
      Bytes bytes = source.Draw(2048);
      const auto byte = static_cast<unsigned char>(bytes[place - 1] + 1);
      std::fill_n(&bytes[place], size, byte);
      bytes[place + size] = static_cast<unsigned char>(byte + 1);
      EXPECT_EQ(size < 9, Passes(bytes, kGoodBytes)) << place;
    }
  }
}

// Whole windows are screened for four equal bytes at a multiple of four, which shorter runs may not contain.
TEST(HealthTest, SeesShorterRunsWhereverTheyBegin) {
  Source source(8);
  for (const std::uint32_t cutoff : {2U, 5U, 6U, 7U, 8U}) {
    for (std::size_t place = 600; place < 620; ++place) {
      Bytes bytes = source.Draw(2048);
      for (std::size_t i = 1; i < bytes.size(); ++i) {
        if (bytes[i] == bytes[i - 1]) ++bytes[i];
      }
      std::fill_n(&bytes[place], cutoff, static_cast<unsigned char>(bytes[place - 1] + 1));
      EXPECT_FALSE(Passes(bytes, {cutoff, 1000, 512, true})) << cutoff << " at " << place;
    }
  }
}

// A run that ended before a window does not continue after it.
TEST(HealthTest, CountsNothingFromBeforeAWholeWindow) {
  Bytes run = Source(9).Draw(1536);
  std::fill_n(&run[509], 3, static_cast<unsigned char>(run[508] + 1));
  run[512] = static_cast<unsigned char>(run[511] + 1);
  std::fill_n(&run[1023], 8, static_cast<unsigned char>(run[1022] + 1));
  run[1031] = static_cast<unsigned char>(run[1030] + 1);
  EXPECT_TRUE(Passes(run, kGoodBytes));

  Bytes copy = Source(10).Draw(1536);
  std::copy_n(&copy[484], 12, &copy[500]);  // twelve up to the end of the first window
  copy[1023] = static_cast<unsigned char>(copy[1007] + 1);
  std::copy_n(&copy[1008], 15, &copy[1024]);
  copy[1039] = static_cast<unsigned char>(copy[1023] + 1);
  EXPECT_TRUE(Passes(copy, kGoodBytes));
}

TEST(HealthTest, SeesSixteenRepeatedBytesWhereverTheyBeginAndNoFewer) {
  Source source(6);
  for (std::size_t place = 1; place < 1100; ++place) {
    for (const std::size_t size : {15UL, 16UL}) {
      Bytes bytes = source.Draw(2048);
      std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(place), size, &bytes[place + 16]);
      if (size == 15) {  // neither the byte before nor the one after may be the sixteenth by chance
        bytes[place + 15] = static_cast<unsigned char>(bytes[place - 1] + 1);
        bytes[place + 31] = static_cast<unsigned char>(bytes[place + 15] + 1);
      }
      EXPECT_EQ(size < 16, Passes(bytes, {1000, 1000, 512, true})) << place;
    }
  }
}

// With the shortest window, the 16 bytes before it came in an earlier piece.
TEST(HealthTest, ComparesAWindowOfSixteenBytesWithThoseOfAnEarlierPiece) {
  const Bytes first = Source(8).Draw(16);
  Bytes memory = Source(9).Draw(32);  // of which the second half is fed
  std::copy_n(first.begin() + 13, 3, memory.begin() + 29);
  memory[28] = static_cast<unsigned char>(first[12] + 1);
  for (std::size_t i = 13; i < 16; ++i) memory[i] = static_cast<unsigned char>(first[i] + 1);
  RngHealthTest test({1000, 1000, 16, true});
  EXPECT_TRUE(test.Feed(first.data(), 16));
  EXPECT_TRUE(test.Feed(&memory[16], 16));  // ends with three equal bytes
  const Bytes thirteen(memory.begin() + 16, memory.begin() + 29);
  EXPECT_FALSE(test.Feed(thirteen.data(), 13));
  EXPECT_EQ(RngHealthAlarm::kBlock, test.Alarm());
}

TEST(HealthTest, HasNoBytesBeforeTheFirst) {
  Bytes bytes = Source(7).Draw(2000);
  std::fill_n(bytes.begin(), 20, static_cast<unsigned char>(0));
  EXPECT_TRUE(Passes(bytes, {21, 1000, 512, true}));
  EXPECT_TRUE(Passes(Bytes(31, 0), {1000, 1000, 512, true}));
  EXPECT_FALSE(Passes(Bytes(32, 0), {1000, 1000, 512, true}));
}

TEST(HealthTest, LeavesGoodBytesAlone) {
  EXPECT_TRUE(Passes(Source(4).Draw(64UL << 20), kGoodBytes));
}

TEST(HealthTest, AnAlarmLastsUntilItIsReset) {
  RngHealthTest test(kGoodBytes);
  const Bytes zeros(9, 0);
  const Bytes good = Source(5).Draw(1000);
  EXPECT_FALSE(test.Feed(zeros.data(), zeros.size()));
  EXPECT_FALSE(test.Feed(good.data(), good.size()));
  EXPECT_FALSE(test.Feed(nullptr, 0));
  EXPECT_EQ(RngHealthAlarm::kRepetition, test.Alarm());
  test.Reset();
  EXPECT_TRUE(test.Feed(good.data(), good.size()));
  EXPECT_TRUE(test.Feed(zeros.data(), 8));  // of the earlier zeros, none counts
}

TEST(HealthTest, ResetForgetsTheBytesBefore) {
  RngHealthTest test(kGoodBytes);
  const Bytes zeros(8, 0);
  const Bytes block = Source(11).Draw(16);
  EXPECT_TRUE(test.Feed(zeros.data(), zeros.size()));
  test.Reset();
  EXPECT_TRUE(test.Feed(zeros.data(), zeros.size()));
  test.Reset();
  EXPECT_TRUE(test.Feed(block.data(), block.size()));
  test.Reset();
  EXPECT_TRUE(test.Feed(block.data(), block.size()));
}

TEST(HealthTest, KeepsNoBytesBeyondItsEndOrAReset) {
  alignas(RngHealthTest) unsigned char memory[sizeof(RngHealthTest)];
  const Bytes bytes = Source(12).Draw(1024);
  const auto holdsBytes = [&] {
    return std::search(memory, std::end(memory), bytes.end() - 16, bytes.end()) != std::end(memory);
  };
  for (const bool isReset : {false, true}) {
    auto* const test = new (memory) RngHealthTest(kGoodBytes);
    EXPECT_TRUE(test->Feed(bytes.data(), bytes.size()));
    EXPECT_TRUE(holdsBytes());
    isReset ? test->Reset() : test->~RngHealthTest();
    EXPECT_FALSE(holdsBytes()) << isReset;
  }
}

// The last one, and the first of the window.
TEST(HealthTest, KeepsNoSingleByteBeyondItsEndOrAReset) {
  constexpr unsigned char kByte = 0xD7;
  alignas(RngHealthTest) unsigned char memory[sizeof(RngHealthTest)] = {};
  const auto countBytes = [&] { return std::count(memory, std::end(memory), kByte); };
  for (const bool isReset : {false, true}) {
    auto* const test = new (memory) RngHealthTest(kGoodBytes);
    EXPECT_TRUE(test->Feed(&kByte, 1));
    EXPECT_EQ(3, countBytes());
    isReset ? test->Reset() : test->~RngHealthTest();
    EXPECT_EQ(0, countBytes()) << isReset;
  }
}

TEST(HealthTest, NothingIsFoundInNothing) {
  EXPECT_TRUE(RngHealthTest(kGoodBytes).Feed(nullptr, 0));
  EXPECT_TRUE(Passes(Bytes(900, 0), kNothingElse));
}
