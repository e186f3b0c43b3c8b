// The sentences of "rngctl test", made without drawing.

#include "tools/rngctl/test/report/report.h"

#include "tests/quality/sources.h"

#include <gmock/gmock.h>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

DrawnStream Stream(const Bytes& bytes, std::uint32_t flags = 0) {
  StreamTests tests(bytes.size());
  tests.Feed(bytes.data(), bytes.size());
  return {{"dsdr", "A device", "r1", flags}, tests, {}};
}

std::string Found(QualityTest test, const TestReport& report) {
  return report.tests.at(static_cast<std::size_t>(test)).found;
}

std::string Found(QualityTest test, const Bytes& bytes) {
  return Found(test, MakeReport(Stream(bytes), 0, {}));
}

std::string FoundInRestarts(std::uint64_t wanted, const std::vector<FirstDraw>& draws,
                            std::uint32_t flags = 0) {
  return Found(QualityTest::kRestarts, MakeReport(Stream(GoodBytes(100), flags), wanted, draws));
}

std::string Printed(void (*print)(const TestReport&), const TestReport& report) {
  std::ostringstream text;
  std::streambuf* const before = std::cout.rdbuf(text.rdbuf());
  print(report);
  std::cout.rdbuf(before);
  return text.str();
}

std::string Printed(void (*print)(const TestReport&), const Speed& speed) {
  DrawnStream stream = Stream(GoodBytes(5000));
  stream.speed = speed;
  return Printed(print, MakeReport(stream, 0, {}));
}

}  // namespace

TEST(TestReport, SaysWhereBytesAreTooFew) {
  EXPECT_THAT(MakeReport(Stream(GoodBytes(4095)), 0, {}).reason, HasSubstr(" So few bytes show "));
  EXPECT_EQ("No test found a difference from random bytes.",
            MakeReport(Stream(GoodBytes(4096)), 0, {}).reason);
}

TEST(TestReport, NamesTheBitThatIsFarthestFromOneHalf) {
  Bytes seldom = GoodBytes(4096);
  for (unsigned char& byte : seldom) byte &= 0x7F;
  EXPECT_EQ("Bit 7 is one in 0.00 % of the bytes, p < 1e-99.",
            Found(QualityTest::kBitFrequencies, seldom));
  Bytes often = GoodBytes(4096);
  for (unsigned char& byte : often) byte |= 0x04;
  EXPECT_EQ("Bit 2 is one in 100.00 % of the bytes, p < 1e-99.",
            Found(QualityTest::kBitFrequencies, often));
}

TEST(TestReport, CountsTheBlocksThatFailEachTest) {
  Bytes bytes = GoodBytes(10 * kBlockSize);
  EXPECT_EQ("0 of 10 blocks failed FIPS 140-2 tests; up to 2 may fail.",
            Found(QualityTest::kBlocks, bytes));
  std::fill_n(bytes.begin() + 3 * kBlockSize, 4, static_cast<unsigned char>(0));
  for (std::size_t i = 0; i < kBlockSize; i += 20) bytes[i] = 0x1B;
  EXPECT_EQ(
      "2 of 10 blocks failed FIPS 140-2 tests (monobit 0, poker 1, runs 0, long run 1); up to 2 "
      "may fail.",
      Found(QualityTest::kBlocks, bytes));
  EXPECT_EQ("It needs at least 3 blocks of 2,500 bytes.",
            Found(QualityTest::kBlocks, GoodBytes(2 * kBlockSize)));
}

TEST(TestReport, SaysWhatRepeats) {
  Bytes bytes = GoodBytes(4096);
  EXPECT_THAT(Found(QualityTest::kRepetition, bytes),
              StartsWith("No byte occurred 6 times in a row,"));
  EXPECT_THAT(Found(QualityTest::kProportion, bytes), StartsWith("No window of 512 bytes "));
  std::copy_n(bytes.begin() + 1600, 16, bytes.begin() + 1616);
  EXPECT_EQ("16 bytes repeated the 16 before them.", Found(QualityTest::kRepetition, bytes));
  const Bytes constant(4096, 7);
  EXPECT_EQ("A byte occurred 6 times in a row.", Found(QualityTest::kRepetition, constant));
  EXPECT_THAT(Found(QualityTest::kProportion, constant), StartsWith("A window of 512 bytes "));
}

TEST(TestReport, SaysWhyRestartsWereNotCompared) {
  EXPECT_EQ("It was skipped, as requested.", FoundInRestarts(0, {}));
  EXPECT_EQ("Each start would ask the user.", FoundInRestarts(0, {}, kRngCapabilityNeedsUser));
  EXPECT_EQ("It needs at least two starts.", FoundInRestarts(1, {{1}}));
  EXPECT_EQ("It needs at least two starts.", FoundInRestarts(1, {{1}}, kRngCapabilityNeedsUser));
}

TEST(TestReport, SaysWhatRestartsHaveInCommon) {
  EXPECT_EQ("Starts 1 and 3 of 3 gave the same bytes: the generator has too few seeds.",
            FoundInRestarts(3, {{1}, {2}, {1}}));
  EXPECT_EQ(
      "Starts 1 and 2 of 2 gave bytes whose first 31 bits are equal; chance explains at most 23.",
      FoundInRestarts(2, {{9, 9, 9, 0}, {9, 9, 9, 1}}));
  EXPECT_EQ(
      "The first draws of 2 starts differ: no two share more than their first 6 bits. Only 2 of "
      "the 1,000 starts could be made in 30 s.",
      FoundInRestarts(1000, {{1}, {2}}));
}

TEST(TestReport, GivesSpeedsInReadableUnits) {
  EXPECT_THAT(Printed(PrintText, {999, 0, 0, 0}),
              HasSubstr("\nspeed       999 bytes per second\n"));
  EXPECT_THAT(Printed(PrintText, {12'345, 0, 0, 0}), HasSubstr(" 12.3 kB per second\n"));
  EXPECT_THAT(Printed(PrintText, {1'000'000, 0, 0, 0}), HasSubstr(" 1 MB per second\n"));
  EXPECT_THAT(
      Printed(PrintText, {9, 1000, 1.5e-7, 2.5e-6}),
      HasSubstr(
          "\n            32 bytes take 150 ns (median), 2.5 us (99th percentile of 1000 draws)\n"));
  EXPECT_THAT(Printed(PrintText, {9, 1, 0.0125, 2}),
              HasSubstr(" 12.5 ms (median), 2 s (99th percentile of 1 draw)\n"));
}

TEST(TestReport, GivesSpeedsAsNumbersInJson) {
  const auto speed = nlohmann::json::parse(Printed(PrintJson, {9, 7, 0.25, 0.5})).at("speed");
  EXPECT_EQ(9, speed.at("bytes_per_second"));
  EXPECT_EQ(7, speed.at("small_draws").at("count"));
  EXPECT_EQ(0.25, speed.at("small_draws").at("median_seconds"));
  EXPECT_EQ(0.5, speed.at("small_draws").at("percentile_99_seconds"));
}

TEST(TestReport, PrintsAllThatWasFound) {
  DrawnStream stream = Stream(GoodBytes(50'000));
  stream.speed = {1'234'567, 1000, 2e-6, 3e-6};
  EXPECT_EQ(
      R"(generator   dsdr: A device
device      r1
drawn       50,000 bytes
speed       1.23 MB per second
            32 bytes take 2 us (median), 3 us (99th percentile of 1000 draws)

passed      blocks               0 of 20 blocks failed FIPS 140-2 tests; up to 3 may fail.
passed      repetition-count     No byte occurred 6 times in a row, and no 16 bytes repeated the 16 before them.
passed      adaptive-proportion  No window of 512 bytes contained its first byte 19 times.
passed      bit-frequencies      Each bit is one in 49.66 % to 50.14 % of the bytes, p = 1.
passed      byte-frequencies     The 256 values are about equally frequent: chi-square 223.8, p = 0.16.
passed      serial-correlation   The correlation of neighbouring bytes is -0.0042, p = 0.35.
passed      restarts             The first draws of 3 starts differ: no two share more than their first 7 bits. With )"
      R"(2^1 possible seeds or fewer, two of them would be equal with a probability of at least 99 %.

verdict     No test found a difference from random bytes.
limits      Statistics cannot show whether bytes can be predicted: a counter hashed with SHA-256 passes every test. )"
      R"(Only the design of the vendor's entropy source and an assessment of it can.
)",
      Printed(PrintText, MakeReport(stream, 3, {{1}, {2}, {3}})));
}

TEST(TestReport, PrintsWhatFailedAndWhatWasNotMade) {
  EXPECT_EQ(R"(generator   dsdr: A device
device      r1
drawn       1,000 bytes

not made    blocks               It needs at least 3 blocks of 2,500 bytes.
failed      repetition-count     A byte occurred 6 times in a row.
failed      adaptive-proportion  A window of 512 bytes contained its first byte 17 times.
failed      bit-frequencies      Bit 2 is one in 100.00 % of the bytes, p < 1e-99.
not made    byte-frequencies     It needs at least 4,096 bytes.
not made    serial-correlation   It needs at least 4,096 bytes.
not made    restarts             Each start would ask the user.

verdict     The bytes are not random. A byte occurred 6 times in a row.
limits      Statistics cannot show whether bytes can be predicted: a counter hashed with SHA-256 passes every test. )"
            R"(Only the design of the vendor's entropy source and an assessment of it can.
)",
            Printed(PrintText, MakeReport(Stream(Bytes(1000, 7), kRngCapabilityNeedsUser), 0, {})));
}

TEST(TestReport, SaysHowABytesFrequenciesDiffer) {
  Bytes even(25'600);
  for (std::size_t i = 0; i < even.size(); ++i) even[i] = static_cast<unsigned char>(i);
  EXPECT_EQ(
      "The 256 values are closer to equally frequent than chance allows: chi-square 0, p < 1e-99.",
      Found(QualityTest::kByteFrequencies, even));
  EXPECT_EQ("The correlation of neighbouring bytes is 0.98, p < 1e-99.",
            Found(QualityTest::kSerialCorrelation, even));
  Bytes often = GoodBytes(25'600);
  std::fill_n(often.begin(), 500, static_cast<unsigned char>(7));
  EXPECT_EQ("The 256 values are not equally frequent: chi-square 2661, p < 1e-99.",
            Found(QualityTest::kByteFrequencies, often));
}
