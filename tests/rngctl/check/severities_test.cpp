#include "tests/rngctl/check/check.h"

#include <gtest/gtest.h>
#include <utility>

namespace {

using Severities = std::vector<std::pair<std::string, std::string>>;

// Every check, in the order of the report. Scripts rely on the severities: only errors make the command
// fail.
const Severities kSeverities = {
    {"catalogue-pair", "error"},
    {"one-export", "error"},
    {"no-unique-symbols", "error"},
    {"no-static-tls", "error"},
    {"no-executable-stack", "error"},
    {"opens", "error"},
    {"gives-object", "note"},
    {"null-settings", "error"},
    {"empty-settings", "error"},
    {"built-in-settings", "error"},
    {"reload", "error"},
    {"available", "note"},
    {"name", "error"},
    {"name-length", "warning"},
    {"name-in-catalogue", "warning"},
    {"description", "error"},
    {"description-line", "warning"},
    {"hardware-id", "error"},
    {"plain-texts", "warning"},
    {"device-report", "error"},
    {"stable-flags", "warning"},
    {"some-flag", "warning"},
    {"self-test", "warning"},
    {"any-device", "error"},
    {"unknown-device", "warning"},
    {"own-device", "warning"},
    {"empty-draw", "error"},
    {"draw-succeeds", "warning"},
    {"waits-are-flagged", "warning"},
    {"refused-device", "error"},
    {"draws-after-calls", "error"},
    {"cancel", "error"},
    {"failed-draw-is-zero", "error"},
    {"draw-fills-buffer", "error"},
    {"drawn-values", "error"},
    {"draws-differ", "error"},
    {"draws-look-random", "error"},
    {"concurrent-calls", "error"},
    {"release-ends-threads", "error"},
    {"release-closes-files", "error"},
    {"no-handlers-left", "error"},
    {"clean-exit", "error"},
    {"exit-without-release", "warning"},
    {"unmapped", "error"},
    {"process-state", "error"},
    {"load-cycles", "error"},
    {"no-exceptions", "error"},
    {"no-lifecycle-calls", "error"},
    {"no-output", "warning"},
};

}  // namespace

TEST(Check, EachRuleHasItsSeverity) {
  const json report = Report(Breaking("correct"));
  Severities severities;
  for (const json& check : report.at("checks")) {
    severities.emplace_back(check.at("name"), check.at("severity"));
  }
  EXPECT_EQ(kSeverities, severities);
}
