#include "tools/rngctl/terminal/text.h"
#include "tools/rngctl/test/report/report.h"
#include "tools/rngctl/test/timed_draws.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

Json OrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json AsJson(const ReportedTest& test) {
  constexpr const char* kOutcomes[] = {"passed", "failed", "not-made"};
  return {{"name", test.name},
          {"result", kOutcomes[static_cast<std::size_t>(test.outcome)]},
          {"found", test.found},
          {"probability", test.probability ? Json(*test.probability) : Json()}};
}

Json AsJson(const Speed& speed) {
  Json json = {{"bytes_per_second", speed.bytesPerSecond}, {"small_draws", nullptr}};
  if (speed.smallDraws > 0) {
    json["small_draws"] = {{"bytes", kSmallDraw},
                           {"count", speed.smallDraws},
                           {"median_seconds", speed.median},
                           {"percentile_99_seconds", speed.percentile99}};
  }
  return json;
}

Json RestartsAsJson(const TestReport& report) {
  const std::size_t bits = report.ruledOutSeedBits;
  return {{"wanted", report.restartsWanted},
          {"made", report.restartsMade},
          {"ruled_out_seed_bits", bits > 0 ? Json(bits) : Json()}};
}

}  // namespace

void PrintJson(const TestReport& report) {
  Json json = {{"generator", OrNull(report.facts.name)},
               {"description", OrNull(report.facts.description)},
               {"device", OrNull(report.facts.device)},
               {"needs_user", report.asksUser},
               {"bytes", report.bytes},
               {"speed", report.asksUser ? Json() : AsJson(report.speed)},
               {"tests", Json::array()},
               {"restarts", RestartsAsJson(report)},
               {"false_alarm", kFalseAlarmOfRun},
               {"verdict", report.isSuspicious ? "not-random" : "nothing-found"},
               {"reason", report.reason},
               {"limits", kLimitOfStatistics}};
  for (const ReportedTest& test : report.tests) json["tests"].push_back(AsJson(test));
  std::cout << EscapedJson(json.dump(2, ' ', false, Json::error_handler_t::replace)) << '\n';
}
