#ifndef TOOLS_RNGCTL_CHECK_REPORT_H
#define TOOLS_RNGCTL_CHECK_REPORT_H

#include <cstddef>
#include <string>
#include <vector>

/// What `rngctl check` found: one structure for people and for scripts.

enum class Severity { kError, kWarning, kNote };
enum class Outcome { kPassed, kFailed, kNotExamined };

struct Finding {
  Outcome outcome;
  std::string seen;       ///< in a sentence: the fault, or why it was not examined
  std::string mend = {};  ///< of a fault to which the check's own does not fit
  bool isGraver = false;  ///< than the check: an operation has ended the process, which is an error
};
inline Finding Passed() { return {Outcome::kPassed, ""}; }
inline Finding Failed(const std::string& seen, const std::string& mend = "") {
  return {Outcome::kFailed, seen, mend};
}
inline Finding NotExamined(const std::string& why) { return {Outcome::kNotExamined, why}; }

struct CheckResult {
  std::string name;  ///< in kebab case, the same for ever
  Severity severity;
  std::string rule;  ///< what a correct plug-in does
  std::string mend;  ///< what the author can do about a failure
  Finding finding;
};

struct CheckReport {
  std::string plugin;
  std::string factory;  ///< empty when it is unknown
  std::vector<CheckResult> checks;

  std::size_t Count(Outcome outcome) const;
  std::size_t CountFailed(Severity severity) const;
};

void PrintAsText(const CheckReport& report);
void PrintAsJson(const CheckReport& report);

#endif
