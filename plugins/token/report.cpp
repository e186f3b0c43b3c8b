// Reports to administrators' tools which tokens can be used, and why others cannot.

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
  // If all of its sessions are in use, the token works for somebody else.
  return finding.isRandom || finding.drawn == CKR_SESSION_COUNT;
}

std::string LineOfDevice(const Finding& finding) {
  const Token& token = finding.token;
  return "device\t" + token.serial + "\tToken \"" + Plain(token.label) + "\", model " +
         Plain(token.model) + '\n';
}

// Why no draw from the token was tried; "" if nobody expects one.
std::string ProblemOfOther(const Token& token, bool isAlone) {
  if (!token.isInitialized) {
    return isAlone ? "The token in slot " + std::to_string(token.slot.id) + " of " +
                         token.slot.module->File() +
                         " has not been initialized. Initialize it with its vendor's tool."
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
         " has the same serial number as another token, so neither is used. Remove one, or rebuild "
         "the plug-in with module-name, module-path or token in its URI.";
}

std::string ProblemOf(const Finding& finding, bool isAlone) {
  const Token& token = finding.token;
  if (!token.IsCandidate()) return ProblemOfOther(token, isAlone);
  if (finding.drawn == CKR_USER_NOT_LOGGED_IN) {
    return Describe(token) +
           " requires a PIN to generate random bytes, and this plug-in never asks for one. Insert "
           "another token.";
  }
  if (finding.drawn == CKR_OK && !finding.isRandom) {
    return Describe(token) + " returns bytes that are not random. Remove it.";
  }
  if (!IsDevice(finding)) {
    return Describe(token) + " cannot generate random bytes: " + Explain(finding.drawn) +
           ". Remove it and insert it again.";
  }
  if (IsStorable(token.serial)) return "";
  return Describe(token) +
         " cannot be selected, because its serial number cannot be stored in rng.ini. It can be "
         "used only while no device is selected.";
}

// Where none can be used.
std::string ProblemOfAll(const Findings& findings) {
  const bool areSome =
      std::any_of(findings.all.begin(), findings.all.end(),
                  [](const Finding& finding) { return finding.token.isInitialized; });
  // Modules show no tokens to a user who may not use them.
  const char* const rights = areSome ? "" : " If one is inserted, allow this user to use it.";
  return std::string("No usable token matches ") + kUri + ". Insert one." + rights;
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
  if (findings.hasModules) addProblem(ProblemOfAll(findings));
  return report;
}

std::string g_report;  // written by the call without a buffer, returned by the call with one

}  // namespace

std::int32_t GetRngReport(char* buffer) {
  if (!buffer) g_report = WriteReport();
  if (g_report.empty()) return 0;
  if (buffer) std::memcpy(buffer, g_report.c_str(), g_report.size() + 1);
  return static_cast<std::int32_t>(g_report.size() + 1);
}
