#include "tools/rngctl/check/report.h"
#include "tools/rngctl/terminal/text.h"

#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

const std::map<Severity, const char*> kSeverities = {
    {Severity::kError, "error"}, {Severity::kWarning, "warning"}, {Severity::kNote, "note"}};

const std::map<Outcome, const char*> kOutcomes = {{Outcome::kPassed, "passed"},
                                                  {Outcome::kFailed, "failed"},
                                                  {Outcome::kNotExamined, "not-examined"}};

Json AsJson(const CheckResult& check) {
  Json json = {{"name", check.name},
               {"severity", kSeverities.at(check.severity)},
               {"result", kOutcomes.at(check.outcome)},
               {"rule", check.sentence}};
  if (check.outcome == Outcome::kNotExamined) json["reason"] = check.found;
  if (check.outcome == Outcome::kFailed) {
    json["found"] = check.found;
    json["fix"] = check.fix;
  }
  return json;
}

Json AsJson(const CheckOutput& output) {
  return {{"stream", output.isError ? "stderr" : "stdout"},
          {"line", output.line},
          {"count", output.count},
          {"checks", output.checks}};
}

}  // namespace

void PrintJson(const CheckReport& report) {
  Json json = {{"plugin", report.plugin.path}, {"factory", nullptr}, {"checks", Json::array()}};
  if (!report.plugin.factory.empty()) json["factory"] = report.plugin.factory;
  for (const CheckResult& check : report.checks) json["checks"].push_back(AsJson(check));
  json["output"] = Json::array();
  for (const CheckOutput& output : report.output) json["output"].push_back(AsJson(output));
  json["omitted_lines"] = report.omittedLines;
  json["counts"] = {{"passed", report.Count(Outcome::kPassed)},
                    {"errors", report.CountFailed(Severity::kError)},
                    {"warnings", report.CountFailed(Severity::kWarning)},
                    {"notes", report.CountFailed(Severity::kNote)},
                    {"not_examined", report.Count(Outcome::kNotExamined)}};
  std::cout << EscapedJson(json.dump(2, ' ', false, Json::error_handler_t::replace)) << '\n';
}
