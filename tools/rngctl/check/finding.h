#ifndef TOOLS_RNGCTL_CHECK_FINDING_H
#define TOOLS_RNGCTL_CHECK_FINDING_H

#include "tools/rngctl/channel/messages.h"

#include <optional>
#include <string>

enum class Severity { kError, kWarning, kNote };
constexpr Severity LastOf(Severity) { return Severity::kNote; }

enum class Outcome { kPassed, kFailed, kNotExamined };
constexpr Outcome LastOf(Outcome) { return Outcome::kNotExamined; }

struct Finding {
  Outcome outcome;
  std::string found;     ///< the fault, or why the check was not examined; a sentence
  std::string fix = {};  ///< empty: the rule's own
  std::optional<Severity> severity = {};  ///< empty: the rule's own
};
RNGCTL_MESSAGE(Finding, outcome, found, fix, severity)

inline Finding Passed() { return {Outcome::kPassed, ""}; }
inline Finding Failed(const std::string& found, const std::string& fix = "") {
  return {Outcome::kFailed, found, fix};
}
inline Finding NotExamined(const std::string& why) { return {Outcome::kNotExamined, why}; }

#endif
