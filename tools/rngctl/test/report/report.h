#ifndef TOOLS_RNGCTL_TEST_REPORT_REPORT_H
#define TOOLS_RNGCTL_TEST_REPORT_REPORT_H

#include "quality/verdict.h"
#include "tools/rngctl/test/stream.h"

#include <string>
#include <vector>

/// What "rngctl test" reports.
struct ReportedTest {
  std::string name;
  QualityOutcome outcome;
  std::string found;  ///< one or two sentences; why, if the test was not made
  std::optional<double> probability;
};

struct TestReport {
  SourceFacts facts;
  bool asksUser;
  std::uint64_t bytes;
  Speed speed;
  std::vector<ReportedTest> tests;
  std::uint64_t restartsWanted;
  std::uint64_t restartsMade;
  std::size_t ruledOutSeedBits;  ///< 0: none
  bool isSuspicious;
  std::string reason;  ///< for the verdict, in a sentence
};

/// Always part of the report.
inline constexpr char kLimitOfStatistics[] =
    "Statistics cannot show whether bytes can be predicted: a counter hashed with SHA-256 passes "
    "every test. Only the design of the vendor's entropy source and an assessment of it can.";

TestReport MakeReport(const DrawnStream& stream, std::uint64_t restartsWanted,
                      const std::vector<FirstDraw>& draws);

void PrintText(const TestReport& report);
void PrintJson(const TestReport& report);

#endif
