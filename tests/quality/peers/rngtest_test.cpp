// The verdicts on blocks against those of rngtest, block by block. RNG_BLOCKS is the number of blocks of
// all streams together.

#include "quality/block_limits.h"
#include "quality/blocks.h"
#include "tests/quality/peers/peer.h"
#include "tests/quality/peers/streams.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

namespace {

// What the tests count in a block, bit by bit.
struct Counts {
  std::uint32_t ones = 0;
  std::array<std::uint32_t, 16> digits = {};
  std::array<std::array<std::uint32_t, kRunLengths>, 2> runs = {};  // of zeros, of ones
  std::uint32_t longest = 0;
  unsigned firstBit = 0;
  unsigned lastBit = 0;
  std::size_t lastRun = 0;  // its length, as an index
};

Counts Count(const unsigned char* block) {
  const auto bitAt = [block](std::size_t place) {
    return block[place / 8] >> (7 - place % 8) & 1U;
  };
  Counts counts;
  counts.firstBit = bitAt(0);
  for (std::size_t place = 0; place < kBlockBits;) {
    std::uint32_t run = 0;
    counts.lastBit = bitAt(place);
    for (; place < kBlockBits && bitAt(place) == counts.lastBit; ++place) ++run;
    counts.ones += counts.lastBit * run;
    counts.longest = std::max(counts.longest, run);
    counts.lastRun = std::min<std::size_t>(run, kRunLengths) - 1;
    ++counts.runs[counts.lastBit][counts.lastRun];
  }
  for (std::size_t place = 0; place < kBlockSize; ++place) {
    ++counts.digits[block[place] >> 4];
    ++counts.digits[block[place] & 0xF];
  }
  return counts;
}

// rngtest 5 counts differently in two ways. The standard counts every run of a block with its own bit, and
// every digit once, so ours is right. A block close to a limit may therefore get another verdict.
Counts CountAsRngtest(Counts counts, unsigned bitBefore) {
  // It counts the last run of a block among those of the other bit.
  --counts.runs[counts.lastBit][counts.lastRun];
  ++counts.runs[1 - counts.lastBit][counts.lastRun];
  // If a block begins with another bit than the one before ended with, it counts one thing too many: a long
  // run of ones before a one, a digit 15 before a zero.
  if (counts.firstBit != bitBefore) {
    ++(counts.firstBit == 1 ? counts.runs[1][kRunLengths - 1] : counts.digits[15]);
  }
  return counts;
}

BlockFailures Judge(const Counts& counts) {
  double squares = 0;
  for (const std::uint32_t digit : counts.digits) squares += static_cast<double>(digit) * digit;
  const double poker = 16.0 / 5000 * squares - 5000;
  BlockFailures failures = {};
  failures.monobit = counts.ones < kFewestOnes || counts.ones > kMostOnes;
  failures.poker = poker <= 2.16 || poker >= 46.17;
  for (const auto& runs : counts.runs) {
    for (std::size_t length = 0; length < kRunLengths; ++length) {
      const RunLimits limits = kRunLimits[length];
      failures.runs |= runs[length] < limits.least || runs[length] > limits.most;
    }
  }
  failures.longRun = counts.longest >= kLongRun;
  return failures;
}

std::string Name(const BlockFailures& failures) {
  return std::string(failures.monobit ? " monobit" : "") + (failures.poker ? " poker" : "") +
         (failures.runs ? " runs" : "") + (failures.longRun ? " longRun" : "");
}

// rngtest prints after each block, and once more at its end, how many have failed so far. It has a fifth
// test, of 32-bit words that equal the one before: the standard wants that of a generator while it runs, not
// of a block.
std::vector<BlockFailures> RunRngtest(const Bytes& bytes) {
  Bytes input = {'s', 'k', 'i', 'p'};  // it does not test the first four bytes
  input.insert(input.end(), bytes.begin(), bytes.end());
  std::vector<BlockFailures> verdicts;
  std::array<long, 4> now = {};
  std::array<long, 4> before = {};
  const auto read = [](const std::string& line, const char* test, long& count) {
    return std::sscanf(line.c_str(),
                       (std::string("rngtest: FIPS 140-2(2001-10-10) ") + test).c_str(),
                       &count) == 1;
  };
  for (const std::string& line : RunPeer("rngtest -b 1", input)) {
    read(line, "Monobit: %ld", now[0]);
    read(line, "Poker: %ld", now[1]);
    read(line, "Runs: %ld", now[2]);
    if (!read(line, "Long run: %ld", now[3])) continue;
    verdicts.push_back(
        {now[0] > before[0], now[1] > before[1], now[2] > before[2], now[3] > before[3]});
    before = now;
  }
  return verdicts;
}

std::size_t BlocksPerStream() {
  const char* const wanted = std::getenv("RNG_BLOCKS");
  return (wanted ? std::strtoul(wanted, nullptr, 10) : 10000) / AllStreams().size() + 1;
}

class Rngtest : public testing::TestWithParam<Stream> {};

}  // namespace

TEST_P(Rngtest, AgreesOnEveryBlock) {
  const std::size_t blocks = BlocksPerStream();
  const Bytes bytes = GetParam().make(blocks);
  ASSERT_EQ(blocks * kBlockSize, bytes.size());
  const std::vector<BlockFailures> theirs = RunRngtest(bytes);
  ASSERT_EQ(blocks + 1, theirs.size());
  unsigned bitBefore = 'p' & 1;
  std::size_t failing = 0;
  std::size_t different = 0;
  for (std::size_t number = 0; number < blocks; ++number) {
    const unsigned char* const block = &bytes[number * kBlockSize];
    const Counts counts = Count(block);
    const std::string ours = Name(TestBlock(block));
    ASSERT_EQ(Name(Judge(counts)), ours) << "block " << number;
    ASSERT_EQ(Name(theirs[number]), Name(Judge(CountAsRngtest(counts, bitBefore))))
        << "block " << number;
    bitBefore = counts.lastBit;
    failing += !ours.empty();
    different += Name(theirs[number]) != ours;
  }
  std::printf("%s: %zu of %zu blocks fail; rngtest differs on %zu\n", GetParam().name.c_str(),
              failing, blocks, different);
}

INSTANTIATE_TEST_SUITE_P(On, Rngtest, testing::ValuesIn(AllStreams()),
                         [](const auto& stream) { return stream.param.name; });

// The comparison reaches both sides of each limit.
TEST(Streams, FailAndPassEachTest) {
  for (const Stream& stream : AllStreams()) {
    if (stream.name.find("limit_of") != 0 && stream.name.find("runs_of") != 0) continue;
    BlockTests tests;
    const Bytes bytes = stream.make(120);
    tests.Feed(bytes.data(), bytes.size());
    const std::uint64_t failing = stream.name == "limit_of_ones"     ? tests.monobit
                                  : stream.name == "limit_of_digits" ? tests.poker
                                  : stream.name == "limit_of_a_run"  ? tests.longRun
                                                                     : tests.runs;
    EXPECT_LT(10U, failing) << stream.name;
    EXPECT_GT(120U, failing) << stream.name;
  }
}
