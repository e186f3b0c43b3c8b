#include "quality/verdict.h"

#include "quality/block_chance.h"
#include "quality/distributions.h"

#include <algorithm>

namespace {

// For full entropy, and a false alarm anywhere in the stream within the share of the test.
RngHealthCutoffs ChooseCutoffs(std::uint64_t bytes) {
  const auto number = static_cast<double>(std::max<std::uint64_t>(bytes, 1));
  RngHealthCutoffs cutoffs = GetRngHealthCutoffs(8, kFalseAlarmOfTest / number);
  cutoffs.comparesBlocks = true;
  return cutoffs;
}

RngHealthCutoffs WithoutProportion(RngHealthCutoffs cutoffs) {
  cutoffs.proportion = cutoffs.window + 1;
  return cutoffs;
}

RngHealthCutoffs WithoutRepetition(RngHealthCutoffs cutoffs) {
  cutoffs.repetitions = UINT32_MAX;
  cutoffs.comparesBlocks = false;
  return cutoffs;
}

QualityOutcome OutcomeOf(bool isFailed) {
  return isFailed ? QualityOutcome::kFailed : QualityOutcome::kPassed;
}

QualityResult JudgeChance(QualityTest test, std::optional<double> probability) {
  if (!probability) return {test, QualityOutcome::kNotMade};
  return {test, OutcomeOf(*probability <= kFalseAlarmOfTest), probability};
}

QualityResult JudgeStatistic(QualityTest test, const std::optional<Statistic>& statistic) {
  return JudgeChance(test, statistic ? std::optional(statistic->probability) : std::nullopt);
}

QualityResult JudgeHealth(QualityTest test, const RngHealthTest& health, std::uint64_t bytes) {
  if (bytes == 0) return {test, QualityOutcome::kNotMade};
  return {test, OutcomeOf(health.Alarm() != RngHealthAlarm::kNone)};
}

QualityResult JudgeBlocks(const BlockTests& blocks, double chance) {
  if (blocks.blocks < kFewestBlocks) return {QualityTest::kBlocks, QualityOutcome::kNotMade};
  return JudgeChance(QualityTest::kBlocks, GetBinomialTail(blocks.blocks, chance, blocks.failing));
}

// The worst of the eight bits; eight times its probability is a bound on that of any of them.
QualityResult JudgeBits(const ByteStatistics& bytes) {
  std::optional<double> worst;
  for (unsigned bit = 0; bit < 8; ++bit) {
    const std::optional<Statistic> frequency = bytes.GetBitFrequency(bit);
    if (frequency) worst = std::min(worst.value_or(1), 8 * frequency->probability);
  }
  return JudgeChance(QualityTest::kBitFrequencies, worst);
}

QualityResult JudgeRestarts(const std::optional<SharedBits>& shared) {
  if (!shared) return {QualityTest::kRestarts, QualityOutcome::kNotMade};
  return {QualityTest::kRestarts, OutcomeOf(shared->AreBeyondChance())};
}

}  // namespace

StreamTests::StreamTests(std::uint64_t most)
    : cutoffs(ChooseCutoffs(most)),
      repetition(WithoutProportion(cutoffs)),
      proportion(WithoutRepetition(cutoffs)) {}

void StreamTests::Feed(const void* data, std::size_t size) {
  blocks.Feed(data, size);
  bytes.Feed(data, size);
  repetition.Feed(data, size);
  proportion.Feed(data, size);
}

std::size_t QualityVerdict::CountFailed() const {
  return static_cast<std::size_t>(std::count_if(
      results.begin(), results.end(),
      [](const QualityResult& result) { return result.outcome == QualityOutcome::kFailed; }));
}

QualityVerdict Judge(const StreamTests& stream, const std::vector<FirstDraw>& draws) {
  const double chance = GetBlockChances().Any();
  const ByteStatistics& bytes = stream.bytes;
  std::optional<SharedBits> shared;
  if (draws.size() > 1) shared = CompareFirstDraws(draws, kFalseAlarmOfTest);
  return {{JudgeBlocks(stream.blocks, chance),
           JudgeHealth(QualityTest::kRepetition, stream.repetition, bytes.Size()),
           JudgeHealth(QualityTest::kProportion, stream.proportion, bytes.Size()), JudgeBits(bytes),
           JudgeStatistic(QualityTest::kByteFrequencies, bytes.GetChiSquare()),
           JudgeStatistic(QualityTest::kSerialCorrelation, bytes.GetSerialCorrelation()),
           JudgeRestarts(shared)},
          GetMostFailingBlocks(stream.blocks.blocks, chance, kFalseAlarmOfTest),
          shared};
}
