#include "tools/rngctl/doctor/openssl/report.h"
#include "tools/rngctl/terminal/colour.h"
#include "tools/rngctl/terminal/text.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kFirstColumn = 17;

void PrintField(const std::string& name, const std::string& value, Colour colour = Colour::kNone) {
  std::cout << Padded(name, kFirstColumn) << Coloured(Printable(value), colour) << '\n';
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
  return joined;
}

// Another user's programs may have other variables.
void PrintEnvironment(const OpensslReport& report) {
  const std::string variables =
      report.environment.empty() ? "no variable of OpenSSL is set" : Joined(report.environment);
  if (!report.user.empty()) {
    PrintField("Environment", variables + ", as in this process");
  } else if (!report.environment.empty()) {
    PrintField("Environment", variables);
  }
}

void PrintResult(const OpensslReport& report) {
  switch (report.result) {
    case OpensslResult::kDrawn:
      return PrintField("Draw", "from " + report.generator + ", through rngaggregator",
                        report.warnings.empty() ? Colour::kGreen : Colour::kYellow);
    case OpensslResult::kDrawnElsewhere:
      return PrintField("Draw", "from " + report.generator + ": " + report.problem, Colour::kRed);
    case OpensslResult::kFailed:
      return PrintField("Draw", "failed: " + report.problem, Colour::kRed);
  }
}

const char* Identifier(OpensslResult result) {
  switch (result) {
    case OpensslResult::kDrawn:
      return "drawn";
    case OpensslResult::kDrawnElsewhere:
      return "drawn-elsewhere";
    case OpensslResult::kFailed:
      break;
  }
  return "failed";
}

Json OrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

}  // namespace

void PrintText(const OpensslReport& report) {
  if (!report.user.empty()) PrintField("User", report.user);
  PrintEnvironment(report);
  PrintField("Configuration", report.file.empty() ? "none" : report.file);
  if (!report.module.empty()) PrintField("Module", report.module);
  PrintResult(report);
  PrintField(
      "Not examined",
      "programs that ignore the configuration or use a library context of their own; they draw "
      "nothing from rngaggregator, see openssl-provider-rngaggregator(7)");
  if (!report.fix.empty() || !report.warnings.empty()) std::cout << '\n';
  if (!report.fix.empty()) std::cout << "Fix: " << Printable(report.fix) << '\n';
  for (const std::string& warning : report.warnings) {
    std::cout << "Warning: " << Printable(warning) << '\n';
  }
}

void PrintJson(const OpensslReport& report) {
  const Json json = {
      {"user", OrNull(report.user)},          {"environment", report.environment},
      {"configuration", OrNull(report.file)}, {"module", OrNull(report.module)},
      {"result", Identifier(report.result)},  {"generator", OrNull(report.generator)},
      {"problem", OrNull(report.problem)},    {"fix", OrNull(report.fix)},
      {"warnings", report.warnings}};
  std::cout << EscapedJson(json.dump(2, ' ', false, Json::error_handler_t::replace)) << '\n';
}
