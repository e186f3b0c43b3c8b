#include "tools/rngctl/doctor/openssl/configuration/configuration.h"

#include "tools/rngctl/doctor/openssl/configuration/provider_fault.h"
#include "tools/rngctl/doctor/openssl/configuration/sections.h"
#include "tools/rngctl/doctor/openssl/draw.h"

#include <cstdlib>

namespace {

constexpr char kStartName[] = "openssl_conf";
constexpr char kRandomName[] = "random";
constexpr char kAlgorithm[] = "RNGAGGREGATOR";
constexpr char kOwnStart[] = "rngaggregator_init";

// Including our file fixes all of these, whichever line is missing.
std::string Advise(const OpensslSections& sections, const std::string& file) {
  const auto start = sections.Find(kTopSection, kStartName);
  if (start == kOwnStart) return "Restore it as it is in " RNG_OPENSSL_CONFIGURATION ".";
  if (!start && sections.Has(kOwnStart)) {
    return "Write \"openssl_conf = rngaggregator_init\" before the first section of " + file +
           ". If it includes " RNG_OPENSSL_CONFIGURATION ", make that its first line instead.";
  }
  if (sections.Has(kOwnStart)) {
    return "Remove the line \"openssl_conf\" of " + file +
           ", which replaces the one of " RNG_OPENSSL_CONFIGURATION ".";
  }
  return "Make \".include " RNG_OPENSSL_CONFIGURATION "\" the first line of " + file +
         ", and remove its own line \"openssl_conf\". See openssl-provider-rngaggregator(7).";
}

std::string InSection(const std::string& section, const std::string& file) {
  return "the section [" + section + "] of " + file;
}

std::string FindRandomProblem(const OpensslSections& sections, const std::string& file) {
  const auto start = sections.Find(kTopSection, kStartName);
  if (!start) return file + " has no line \"openssl_conf\" before its first section";
  if (!sections.Has(*start)) {
    return file + " has no section [" + *start + "], which \"openssl_conf\" names";
  }
  const auto random = sections.Find(*start, kRandomName, OpensslSections::Naming::kSuffix);
  if (!random) return InSection(*start, file) + " has no line \"random\"";
  if (!sections.Has(*random)) {
    return file + " has no section [" + *random + "], which [" + *start + "] names";
  }
  const auto algorithm = sections.Find(*random, kRandomName);
  if (!algorithm) return InSection(*random, file) + " has no line \"random = RNGAGGREGATOR\"";
  if (*algorithm == kAlgorithm) return "";
  return InSection(*random, file) + " chooses the generator \"" + *algorithm + '"';
}

OpensslFault FindRandomFault(const OpensslSections& sections, const std::string& file) {
  const std::string problem = FindRandomProblem(sections, file);
  if (problem.empty()) return {};
  return {problem, Advise(sections, file)};
}

// The line is the one that OpenSSL could not apply.
OpensslFault Describe(const OpensslSections::Line& line, const std::string& start,
                      const std::string& file) {
  const std::string where =
      line.name.empty() ? file : "the line \"" + line.name + "\" in [" + start + ']';
  return {"OpenSSL stops at " + where + ": " + line.value,
          "Correct it, or move the line \"random\" before it. OpenSSL ignores what follows."};
}

OpensslFault FindAppliedFault(const OpensslSections& sections, const std::string& file) {
  const std::string start = sections.Find(kTopSection, kStartName).value_or("");
  const auto line = sections.Apply();
  if (!line || line->name == "providers") {
    OpensslFault fault = FindProviderFault(sections, start, file);
    if (!fault.problem.empty()) return fault;
  }
  return line ? Describe(*line, start, file) : OpensslFault{};
}

OpensslFault FindFault(OpensslSections& sections, const std::string& file) {
  if (file.empty()) {
    return {"OPENSSL_CONF is empty, so OpenSSL reads no configuration",
            "Unset the variable, or set it to the path of a configuration."};
  }
  OpensslFault fault = FindUnreadable(
      file, std::getenv("OPENSSL_CONF")
                ? "Correct the variable OPENSSL_CONF."
                : "Install OpenSSL's configuration, in Debian with the package openssl.");
  if (fault.problem.empty()) fault = sections.Load(file);
  if (fault.problem.empty()) fault = FindRandomFault(sections, file);
  if (fault.problem.empty()) fault = FindAppliedFault(sections, file);
  return fault;
}

// OpenSSL reads the value as a number, of which all but 0 mean "on".
bool IsOn(const std::optional<std::string>& value) {
  return value && value->find_first_of("123456789") != std::string::npos;
}

std::vector<std::string> FindWarnings(const OpensslSections& sections, const std::string& start) {
  std::vector<std::string> warnings = FindProviderWarnings(sections, start);
  if (!IsOn(sections.Find(kTopSection, "config_diagnostics"))) {
    warnings.push_back(
        "The configuration has no line \"config_diagnostics = 1\" before its first section. "
        "Without it, no program "
        "notices when OpenSSL cannot apply a part of the configuration.");
  }
  const auto lines = sections.Lines(start);
  if (!lines.empty() &&
      OpensslSections::Bare(lines[0].name, OpensslSections::Naming::kSuffix) != kRandomName) {
    warnings.push_back("The line \"random\" is not the first in [" + start +
                       "]. If a line before it fails, programs draw from OpenSSL's own generator.");
  }
  return warnings;
}

}  // namespace

OpensslConfiguration ReadOpensslConfiguration(bool isInOrder) {
  OpensslDraw settings;
  FindOpensslSettings(settings);
  OpensslSections sections;
  OpensslConfiguration answer;
  if (isInOrder) {
    sections.Load(settings.file);
  } else {
    const OpensslFault fault = FindFault(sections, settings.file);
    answer.problem = fault.problem;
    answer.fix = fault.fix;
  }
  const std::string start = sections.Find(kTopSection, kStartName).value_or("");
  answer.module = FindModule(sections, start);
  if (isInOrder) answer.warnings = FindWarnings(sections, start);
  answer.isRead = true;
  return answer;
}
