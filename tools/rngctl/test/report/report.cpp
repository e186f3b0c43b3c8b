#include "tools/rngctl/test/report/report.h"

#include "tools/rngctl/test/report/sentences.h"

#include <algorithm>

namespace {

std::string FindReason(const TestReport& report) {
  const auto failed = std::find_if(
      report.tests.begin(), report.tests.end(),
      [](const ReportedTest& test) { return test.outcome == QualityOutcome::kFailed; });
  if (failed != report.tests.end()) return "The bytes are not random. " + failed->found;
  const std::string few =
      report.bytes >= kFewestBytes ? "" : " So few bytes show only gross defects; -n draws more.";
  return "No test found a difference from random bytes." + few;
}

}  // namespace

TestReport MakeReport(const DrawnStream& stream, std::uint64_t restartsWanted,
                      const std::vector<FirstDraw>& draws) {
  const QualityVerdict verdict = Judge(stream.tests, draws);
  const bool asksUser = (stream.facts.flags & kRngCapabilityNeedsUser) != 0;
  const TestEvidence evidence = {stream.tests, verdict, asksUser, restartsWanted, draws.size()};
  TestReport report = {stream.facts,
                       asksUser,
                       stream.tests.bytes.Size(),
                       stream.speed,
                       {},
                       restartsWanted,
                       draws.size(),
                       GetRuledOutSeedBits(draws.size()),
                       verdict.CountFailed() > 0,
                       ""};
  for (const QualityResult& result : verdict.results) {
    report.tests.push_back(
        {NameOf(result.test), result.outcome, Describe(result, evidence), result.probability});
    if (result.test == QualityTest::kRestarts && result.outcome == QualityOutcome::kFailed) {
      report.ruledOutSeedBits = 0;
    }
  }
  report.reason = FindReason(report);
  return report;
}
