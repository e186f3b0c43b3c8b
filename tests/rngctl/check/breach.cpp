#include "tests/rngctl/check/breach.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

void ExpectBreach(const Breach& breach, const Result& result) {
  const json report = json::parse(result.output);
  EXPECT_EQ(breach.failed, Failed(report)) << result.output << result.errors;
  const std::string name = breach.failed.substr(0, breach.failed.find(' '));
  const json& check = Find(report, name);
  EXPECT_THAT(check.value("found", ""), HasSubstr(breach.found));
  const RuleInReport& rule = RuleOf(name);
  const std::string severity = breach.severity.empty() ? rule.severity : breach.severity;
  EXPECT_EQ(severity, check.at("severity"));
  EXPECT_EQ(severity == "error" ? 1 : 0, result.status);
  const std::string fix = check.value("fix", "");
  EXPECT_EQ(breach.fix.empty() ? rule.fix : breach.fix, fix);
  EXPECT_NE("", fix);
}
