#ifndef TOOLS_RNGCTL_TEST_REPORT_SENTENCES_H
#define TOOLS_RNGCTL_TEST_REPORT_SENTENCES_H

#include "quality/verdict.h"

#include <string>

/// What the sentences about a test are made from.
struct TestEvidence {
  const StreamTests& stream;
  const QualityVerdict& verdict;
  bool asksUser;
  std::uint64_t restartsWanted;
  std::uint64_t restartsMade;
};

/// "byte-frequencies".
std::string NameOf(QualityTest test);

/// What the test found, or why it was not made.
std::string Describe(const QualityResult& result, const TestEvidence& evidence);

#endif
