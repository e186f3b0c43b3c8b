#include "tools/rngctl/test/report/sentences.h"

#include "tools/rngctl/terminal/text.h"
#include "tools/rngctl/test/report/numbers.h"
#include "tools/rngctl/test/restarts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

std::string Probability(const QualityResult& result) {
  const double value = result.probability.value_or(1);
  return value < 1e-99 ? "p < 1e-99" : "p = " + Rounded(value);
}

std::string Percent(double part) {
  char text[16];
  std::snprintf(text, sizeof text, "%.2f %%", 100 * part);
  return text;
}

std::string NotMade(QualityTest test, const TestEvidence& evidence) {
  switch (test) {
    case QualityTest::kBlocks:
      return "It needs at least " + Grouped(kFewestBlocks) + " blocks of " + Grouped(kBlockSize) +
             " bytes.";
    case QualityTest::kRestarts:
      if (evidence.restartsMade == 1) return "It needs at least two starts.";
      return evidence.asksUser ? "Each start would ask the user." : "It was skipped, as requested.";
    default:
      return "It needs at least " + Grouped(kFewestBytes) + " bytes.";
  }
}

std::string DescribeBlocks(const TestEvidence& evidence) {
  const BlockTests& blocks = evidence.stream.blocks;
  std::string text =
      Grouped(blocks.failing) + " of " + Grouped(blocks.blocks) + " blocks failed FIPS 140-2 tests";
  if (blocks.failing > 0) {
    text += " (monobit " + Grouped(blocks.monobit) + ", poker " + Grouped(blocks.poker) +
            ", runs " + Grouped(blocks.runs) + ", long run " + Grouped(blocks.longRun) + ")";
  }
  return text + "; up to " + Grouped(evidence.verdict.mostFailingBlocks) + " may fail.";
}

std::string DescribeRepetition(const StreamTests& stream) {
  const std::string times = std::to_string(stream.cutoffs.repetitions) + " times in a row";
  switch (stream.repetition.Alarm()) {
    case RngHealthAlarm::kNone:
      return "No byte occurred " + times + ", and no 16 bytes repeated the 16 before them.";
    case RngHealthAlarm::kBlock:
      return "16 bytes repeated the 16 before them.";
    default:
      return "A byte occurred " + times + ".";
  }
}

std::string DescribeProportion(const StreamTests& stream) {
  const bool isFine = stream.proportion.Alarm() == RngHealthAlarm::kNone;
  return std::string(isFine ? "No" : "A") + " window of " + std::to_string(stream.cutoffs.window) +
         " bytes contained its first byte " + std::to_string(stream.cutoffs.proportion) + " times.";
}

std::string DescribeBytes(const QualityResult& result, const StreamTests& stream) {
  const double value = stream.bytes.GetChiSquare()->value;
  const std::string numbers =
      ": chi-square " + Rounded(value, 4) + ", " + Probability(result) + ".";
  if (result.outcome == QualityOutcome::kPassed) {
    return "The 256 values are about equally frequent" + numbers;
  }
  return std::string("The 256 values are ") +
         (value > 255 ? "not equally frequent" : "closer to equally frequent than chance allows") +
         numbers;
}

std::string DescribeBits(const QualityResult& result, const StreamTests& stream) {
  double parts[8];
  for (unsigned bit = 0; bit < 8; ++bit) parts[bit] = stream.bytes.GetBitFrequency(bit)->value;
  const auto [least, most] = std::minmax_element(parts, parts + 8);
  if (result.outcome == QualityOutcome::kPassed) {
    return "Each bit is one in " + Percent(*least) + " to " + Percent(*most) + " of the bytes, " +
           Probability(result) + ".";
  }
  const double* const worst = 0.5 - *least > *most - 0.5 ? least : most;
  return "Bit " + std::to_string(worst - parts) + " is one in " + Percent(*worst) +
         " of the bytes, " + Probability(result) + ".";
}

std::string DescribeCorrelation(const QualityResult& result, const StreamTests& stream) {
  return "The correlation of neighbouring bytes is " +
         Rounded(stream.bytes.GetSerialCorrelation()->value) + ", " + Probability(result) + ".";
}

std::string DescribeShared(const SharedBits& shared, std::size_t starts) {
  if (!shared.AreBeyondChance()) {
    const std::size_t bits = GetRuledOutSeedBits(starts);
    std::string text = "The first draws of " + Grouped(starts) +
                       " starts differ: no two share more than their first " +
                       Counted(shared.most, "bit") + ".";
    if (bits > 0) {
      text += " With 2^" + std::to_string(bits) +
              " possible seeds or fewer, two of them would be equal with a probability of at least "
              "99 %.";
    }
    return text;
  }
  const std::string which = "Starts " + Grouped(shared.first + 1) + " and " +
                            Grouped(shared.second + 1) + " of " + Grouped(starts);
  if (shared.most == 8 * sizeof(FirstDraw)) {
    return which + " gave the same bytes: the generator has too few seeds.";
  }
  if (shared.most < shared.limit) {
    return "The first draws of " + Grouped(starts) + " starts all begin with the same " +
           Counted(shared.common, "bit") + ".";
  }
  return which + " gave bytes whose first " + std::to_string(shared.most) +
         " bits are equal; chance explains at most " + std::to_string(shared.limit - 1) + ".";
}

std::string DescribeRestarts(const TestEvidence& evidence) {
  const auto starts = static_cast<std::size_t>(evidence.restartsMade);
  std::string text = DescribeShared(*evidence.verdict.shared, starts);
  if (evidence.restartsMade < evidence.restartsWanted) {
    text += " Only " + Grouped(starts) + " of the " + Grouped(evidence.restartsWanted) +
            " starts could be made in " + std::to_string(kTimeForRestarts.count()) + " s.";
  }
  return text;
}

}  // namespace

std::string NameOf(QualityTest test) {
  constexpr const char* kNames[] = {"blocks",          "repetition-count", "adaptive-proportion",
                                    "bit-frequencies", "byte-frequencies", "serial-correlation",
                                    "restarts"};
  static_assert(std::size(kNames) == kQualityTests);
  return kNames[static_cast<std::size_t>(test)];
}

std::string Describe(const QualityResult& result, const TestEvidence& evidence) {
  if (result.outcome == QualityOutcome::kNotMade) return NotMade(result.test, evidence);
  switch (result.test) {
    case QualityTest::kBlocks:
      return DescribeBlocks(evidence);
    case QualityTest::kRepetition:
      return DescribeRepetition(evidence.stream);
    case QualityTest::kProportion:
      return DescribeProportion(evidence.stream);
    case QualityTest::kByteFrequencies:
      return DescribeBytes(result, evidence.stream);
    case QualityTest::kBitFrequencies:
      return DescribeBits(result, evidence.stream);
    case QualityTest::kSerialCorrelation:
      return DescribeCorrelation(result, evidence.stream);
    default:
      return DescribeRestarts(evidence);
  }
}
