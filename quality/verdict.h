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

/// The share of one test. All tests together get half of the bound. The other half is a reserve for tests whose
/// probabilities are approximations: with 4,096 bytes, the upper tail of the chi-square statistic is a fifth
/// heavier at this probability than that of the distribution that is used for it.
constexpr double kFalseAlarmOfTest = kFalseAlarmOfRun / 2 / kQualityTests;

/// With fewer blocks their test is not made: it could not fail. Two failing blocks of two are more frequent
/// with a perfect source than the share of a test allows.
constexpr std::uint64_t kFewestBlocks = 3;

/// The tests of a stream of bytes. They take all bytes in one pass, and keep none.
class StreamTests {
 public:
  /// `most` is an upper bound on the number of bytes. The cutoffs of the health tests depend on it.
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
  std::optional<double> probability =
      {};  ///< that a perfect source gives a result at least as extreme
};

struct QualityVerdict {
  std::vector<QualityResult> results;  ///< of every test
  std::uint64_t mostFailingBlocks;     ///< more are a failure
  std::optional<SharedBits> shared;    ///< with two first draws or more

  std::size_t CountFailed() const;
};

/// Judges the stream and the first draws of several starts, of which there may be none. A test is not made if
/// there are too few bytes, blocks or draws for it.
QualityVerdict Judge(const StreamTests& stream, const std::vector<FirstDraw>& draws);

#endif
