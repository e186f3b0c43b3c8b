#include "check_report.h"

#include <iostream>
#include <nlohmann/json.hpp>

NLOHMANN_JSON_SERIALIZE_ENUM(Severity, {{Severity::kError, "error"},
                                        {Severity::kWarning, "warning"},
                                        {Severity::kNote, "note"}})

NLOHMANN_JSON_SERIALIZE_ENUM(Outcome, {{Outcome::kPassed, "passed"},
                                       {Outcome::kFailed, "failed"},
                                       {Outcome::kNotExamined, "not-examined"}})

namespace {

using Json = nlohmann::ordered_json;

Json AsJson(const CheckResult& check) {
  Json json = {{"name", check.name},
               {"severity", check.severity},
               {"result", check.finding.outcome},
               {"rule", check.rule}};
  if (check.finding.outcome == Outcome::kNotExamined) json["reason"] = check.finding.seen;
  if (check.finding.outcome == Outcome::kFailed) {
    json["seen"] = check.finding.seen;
    json["mend"] = check.mend;
  }
  return json;
}

}  // namespace

void PrintAsJson(const CheckReport& report) {
  Json json = {{"plugin", report.plugin}, {"factory", nullptr}, {"checks", Json::array()}};
  if (!report.factory.empty()) json["factory"] = report.factory;
  for (const CheckResult& check : report.checks) json["checks"].push_back(AsJson(check));
  json["counts"] = {{"passed", report.Count(Outcome::kPassed)},
                    {"errors", report.CountFailed(Severity::kError)},
                    {"warnings", report.CountFailed(Severity::kWarning)},
                    {"notes", report.CountFailed(Severity::kNote)},
                    {"not_examined", report.Count(Outcome::kNotExamined)}};
  std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}
