#ifndef TESTS_RNGCTL_CHECK_CHECK_H
#define TESTS_RNGCTL_CHECK_CHECK_H

#include "tests/rngctl/installed_tool.h"

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using nlohmann::json;

Result Check(const std::string& arguments);

/// The file of a plug-in of the kind "dsdr" that breaks one rule.
std::string Breaking(const std::string& variant);

json Report(const std::string& arguments);

/// One check in a report, what it found, and why it was not examined.
const json& Find(const json& report, const std::string& name);
std::string Found(const json& report, const std::string& name);
std::string Reason(const json& report, const std::string& name);

/// The names of the checks with that result.
std::string Names(const json& report, const std::string& result);
std::string Failed(const json& report);

/// What a report says about a check whatever it found, from a table that does not depend on the tool.
struct RuleInReport {
  std::string name;
  std::string severity;
  std::string sentence;
  std::string fix;
};
const RuleInReport& RuleOf(const std::string& name);

/// Checks slow plug-ins at the same time, so that a case waits only once.
std::map<std::string, Result> CheckTogether(const std::vector<std::string>& variants);

#endif
