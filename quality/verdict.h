#ifndef QUALITY_VERDICT_H
#define QUALITY_VERDICT_H

#include "quality/blocks.h"
#include "quality/byte_statistics.h"
#include "quality/restarts.h"

#include <cstdint>
#include <optional>
#include <vector>

#include <rngaggregator/health.h>

/// The tests of a source, in the order of a report.
enum class QualityTest {
  kBlocks,
  kRepetition,
  kProportion,
  kBitFrequencies,
  kByteFrequencies,
  kSerialCorrelation,
  kRestarts
};
constexpr std::size_t kQualityTests = 7;

/// A perfect source fails fewer runs of all tests than this.
constexpr double kFalseAlarmOfRun = 1e-6;

/// The share of one test. All together get half of what is allowed. The rest is for the tests whose
/// probabilities come from an approximation: with 4,096 bytes, the upper tail of the chi-square statistic is a
/// fifth heavier there than that of the distribution which stands for it.
constexpr double kFalseAlarmOfTest = kFalseAlarmOfRun / 2 / kQualityTests;

/// What the tests look at in a stream of bytes. They take all of them in one pass, and keep none.
class StreamTests {
 public:
  /// `most` is the number of bytes that will come, or more. It decides when the health tests alarm.
  explicit StreamTests(std::uint64_t most);

  void Feed(const void* data, std::size_t size);

  BlockTests blocks;
  ByteStatistics bytes;
  const RngHealthCutoffs cutoffs;
  RngHealthTest repetition;  ///< also of 16 bytes that repeat the 16 before them
  RngHealthTest proportion;
};

enum class QualityOutcome { kPassed, kFailed, kNotMade };

struct QualityResult {
  QualityTest test;
  QualityOutcome outcome;
  std::optional<double> probability = {};  ///< of a result so far out, from a perfect source
};

struct QualityVerdict {
  std::vector<QualityResult> results;  ///< of every test
  std::uint64_t mostFailingBlocks;     ///< more are a failure
  std::optional<SharedBits> shared;    ///< with two first draws or more

  std::size_t CountFailed() const;
};

/// Judges the stream and the first draws of several starts; those may be none. A test is not made if
/// there are too few bytes, blocks or draws for it.
QualityVerdict Judge(const StreamTests& stream, const std::vector<FirstDraw>& draws);

#endif
