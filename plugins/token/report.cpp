// Tells administrators' tools which tokens there are, and why others are not used.

#include "pkcs11/text.h"
#include "plugin.h"
#include "token_rng.h"

#include <algorithm>
#include <cstring>

#include <rngaggregator/provider.h>

namespace {

using Finding = Source::Finding;
using Findings = Source::Findings;

constexpr std::size_t kLargestReport = 65536;  // with the terminator

bool IsDevice(const Finding& finding) {
  // Where all sessions are in use, somebody else draws.
  return finding.isRandom || finding.drawn == CKR_SESSION_COUNT;
}

std::string LineOfDevice(const Finding& finding) {
  const Token& token = finding.token;
  return "device\t" + token.serial + "\tToken \"" + Plain(token.label) + "\", model " +
         Plain(token.model) + '\n';
}

// Why no draw was made from a token; "" where nobody expects one.
std::string ProblemOfOther(const Token& token, bool isAlone) {
  if (!token.isInitialized) {
    return isAlone ? "A token without a label has not been initialized. Initialize it with the "
                     "tool of its vendor."
                   : "";
  }
  if (!token.difference.empty()) {
    if (!token.hasGenerator && !isAlone) return "";
    return Describe(token) + " does not match " + kUri + ": " + token.difference +
           ". To use it, rebuild the plug-in with another URI.";
  }
  if (!token.hasGenerator)
    return Describe(token) + " has no random-number generator. Insert another token.";
  return Describe(token) +
         " is there twice, so neither is used. Remove one, or rebuild the plug-in with "
         "module-name, module-path or token in its URI.";
}

std::string ProblemOf(const Finding& finding, bool isAlone) {
  const Token& token = finding.token;
  if (finding.drawn == CKR_CANCEL) return ProblemOfOther(token, isAlone);
  if (finding.drawn == CKR_USER_NOT_LOGGED_IN) {
    return Describe(token) +
           " wants a PIN before it gives random bytes. This plug-in asks for none. Insert another "
           "token.";
  }
  if (finding.drawn == CKR_OK && !finding.isRandom) {
    return Describe(token) + " gives bytes that are not random. Do not use it.";
  }
  if (!IsDevice(finding)) {
    return Describe(token) + " gives no random bytes: " + Explain(finding.drawn) +
           ". Insert it again.";
  }
  if (IsStorable(token.serial)) return "";
  return Describe(token) +
         " cannot be selected, because rng.ini cannot hold its serial number. It is used if no "
         "device is selected.";
}

std::string WriteReport() {
  const Findings findings = GetTokenRng().Here().Examine();
  const bool isAlone = std::none_of(findings.all.begin(), findings.all.end(), IsDevice);
  std::string report;
  const auto add = [&report](const std::string& line) {
    if (report.size() + line.size() < kLargestReport) report += line;
  };
  const auto addProblem = [&add](const std::string& problem) {
    if (!problem.empty()) add("problem\t" + problem + '\n');
  };
  for (const Finding& finding : findings.all) {
    if (IsDevice(finding) && IsStorable(finding.token.serial)) add(LineOfDevice(finding));
  }
  for (const Finding& finding : findings.all) addProblem(ProblemOf(finding, isAlone));
  if (!isAlone) return report;
  for (const std::string& problem : findings.problems) addProblem(problem);
  if (findings.hasModules)
    addProblem(std::string("No token that matches ") + kUri + " can be used. Insert one.");
  return report;
}

std::string g_report;  // kept from the call without a buffer for the call with one

}  // namespace

std::int32_t GetRngReport(char* buffer) {
  if (!buffer) g_report = WriteReport();
  if (g_report.empty()) return 0;
  if (buffer) std::memcpy(buffer, g_report.c_str(), g_report.size() + 1);
  return static_cast<std::int32_t>(g_report.size() + 1);
}
