// Frequencies of bits and bytes.

#include "quality/byte_statistics.h"
#include "tools/rngctl/check/looks/faults.h"

#include <algorithm>
#include <cmath>

namespace {

// The probability of a false alarm in one statistic. Eight bits at eight sizes add 6.4 * 10^-11. The byte
// values at the two largest sizes add 2.4 * 10^-12, because the exact tails are 1.4 and 1.02 times those of
// the chi-square distribution there.
constexpr double kUnlikely = 1e-12;

// All bytes of so many are ASCII by chance with a probability below 10^-27.
constexpr std::uint64_t kEnoughForText = 64;

std::string AllBytes(const ByteStatistics& bytes, const DrawsOfSize& drawn) {
  return std::to_string(bytes.Size()) + " bytes of the draws of " + std::to_string(drawn.size) +
         " bytes";
}

bool IsText(const ByteStatistics& bytes) {
  std::uint64_t printable = bytes.Counts()['\n'] + bytes.Counts()['\r'];
  for (std::size_t value = ' '; value <= '~'; ++value) printable += bytes.Counts()[value];
  return bytes.Size() >= kEnoughForText && printable == bytes.Size();
}

std::string Percent(double part) {
  const std::int64_t tenths = std::lround(1000 * part);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " %";
}

std::string DescribeBit(unsigned bit, const ByteStatistics& bytes) {
  constexpr const char* kMasks[8] = {"0x01", "0x02", "0x04", "0x08",
                                     "0x10", "0x20", "0x40", "0x80"};
  const std::string name = std::string("the bit ") + kMasks[bit] + " is ";
  const std::uint64_t ones = bytes.CountOnes(bit);
  if (ones == 0) return name + "always 0";
  if (ones == bytes.Size()) return name + "always 1";
  return name + "1 in " + Percent(static_cast<double>(ones) / static_cast<double>(bytes.Size()));
}

// The probability that a perfect source gives a frequency of this bit that is at least as extreme.
double Chance(const ByteStatistics& bytes, unsigned bit) {
  const auto frequency = bytes.GetBitFrequency(bit);
  return frequency ? frequency->probability : 1;
}

unsigned FindWorstBit(const ByteStatistics& bytes) {
  unsigned worst = 0;
  for (unsigned bit = 1; bit < 8; ++bit) {
    if (Chance(bytes, bit) < Chance(bytes, worst)) worst = bit;
  }
  return worst;
}

Fault DescribeBits(const std::string& all, const ByteStatistics& bytes, unsigned bit) {
  return {
      "In the " + all + ", " + DescribeBit(bit, bytes) + ".",
      "Return bytes in which every bit is random: if the source delivers fewer bits at a time, or "
      "biased ones, combine several values, for example with a hash function."};
}

Fault DescribeValues(const std::string& all, const ByteStatistics& bytes, bool areEven) {
  const auto [least, most] = std::minmax_element(bytes.Counts().begin(), bytes.Counts().end());
  return {
      "In the " + all + ", the 256 values are " +
          (areEven ? "closer to equally frequent than chance allows" : "not equally frequent") +
          ": the rarest occurs " + std::to_string(*least) + " times, the most frequent " +
          std::to_string(*most) + " times.",
      areEven
          ? "Return the source's bytes as they come: a shuffled list, or a full period of a "
            "small generator, contains each value equally often."
          : "Do not map the source's values to bytes with a remainder, a scale factor or a table "
            "that favours some bytes, and do not drop any."};
}

}  // namespace

// A biased bit makes some values more frequent, and a missing value biases bits. The less likely result is
// reported: the other is probably its consequence.
std::optional<Fault> FindBias(const DrawsOfSize& drawn) {
  ByteStatistics bytes;
  for (const DrawnBytes& draw : drawn.draws) bytes.Feed(draw.after.data(), draw.after.size());
  const std::string all = AllBytes(bytes, drawn);
  if (IsText(bytes)) {
    return Fault{"All " + all + " are printable ASCII characters.",
                 "Decode what the source sends as text, and return the bytes that it represents."};
  }
  const unsigned bit = FindWorstBit(bytes);
  const auto values = bytes.GetChiSquare();
  const double chanceOfValues = values ? values->probability : 1;
  const double chanceOfBit = Chance(bytes, bit);
  if (std::min(chanceOfBit, chanceOfValues) >= kUnlikely) return std::nullopt;
  if (chanceOfBit < chanceOfValues || chanceOfBit == 0) return DescribeBits(all, bytes, bit);
  return DescribeValues(all, bytes, values->value < 255);
}
