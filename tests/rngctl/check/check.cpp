#include "tests/rngctl/check/check.h"

#include "tests/support/tree.h"

#include <stdexcept>

Result Check(const std::string& arguments) { return RunShell(RNGCTL " check " + arguments); }

std::string Breaking(const std::string& variant) {
  return FakePlugin("dsdr", "breaking/" + variant);
}

json Report(const std::string& arguments) {
  return json::parse(Check("--json " + arguments).output);
}

const json& Find(const json& report, const std::string& name) {
  for (const json& check : report.at("checks")) {
    if (check.at("name") == name) return check;
  }
  throw std::runtime_error("no check is called " + name);
}

std::string Found(const json& report, const std::string& name) {
  return Find(report, name).value("found", "");
}

std::string Reason(const json& report, const std::string& name) {
  return Find(report, name).value("reason", "");
}

std::string Names(const json& report, const std::string& result) {
  std::string names;
  for (const json& check : report.at("checks")) {
    if (check.at("result") != result) continue;
    names += (names.empty() ? "" : " ") + check.at("name").get<std::string>();
  }
  return names;
}

std::string Failed(const json& report) { return Names(report, "failed"); }

std::map<std::string, Result> CheckTogether(const std::vector<std::string>& variants) {
  std::string command;
  for (const std::string& variant : variants) {
    const std::string file = TreePath(variant);
    command += "(" RNGCTL " check --json --timeout 1 " + Breaking(variant) + " >" + file +
               "; echo $? >" + file + ".status) & ";
  }
  RunShell(command + "wait");
  std::map<std::string, Result> results;
  for (const std::string& variant : variants) {
    const std::string file = TreePath(variant);
    results[variant] = {std::stoi(ReadFile(file + ".status")), ReadFile(file), ""};
  }
  return results;
}
