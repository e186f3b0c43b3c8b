#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/terminal/text.h"

namespace {

// The operations that were not called, ended their process or threw: they may still do anything.
std::string ListUnexamined(const Evidence& evidence) {
  std::string names;
  for (const Step step :
       {Step::kFactory, Step::kSetSettings, Step::kIsAvailable, Step::kGetName,
        Step::kGetDescription, Step::kGetHardwareId, Step::kGetFlags, Step::kSelectDevice,
        Step::kGenerate, Step::kSelfTest, Step::kCancel, Step::kRelease}) {
    if (evidence.stepsTaken.contains(step) && !evidence.badSteps.contains(step)) continue;
    names += (names.empty() ? "" : ", ") + InWords(step);
  }
  return names;
}

Finding Judge(const std::string& fault, const Evidence& evidence) {
  if (!fault.empty()) return Failed(fault);
  const std::string unexamined = ListUnexamined(evidence);
  if (unexamined.empty()) return Passed();
  return NotExamined("these were not called, or did not return: " + unexamined);
}

Finding CheckNoExceptions(const Evidence& evidence) {
  std::string text;
  for (const auto& [step, what] : evidence.exceptions) {
    text += (text.empty() ? "" : " ") + InWords(step) + " throws ";
    text += (what.empty() ? "something that is not a std::exception" : Quoted(what)) + ".";
  }
  return Judge(text, evidence);
}

Finding CheckNoLifecycleCalls(const Evidence& evidence) {
  std::string text;
  for (const auto& [function, step] : evidence.lifecycleCalls) {
    text += (text.empty() ? "" : " ") + std::string(NameOf(function)) + " is called in " +
            InWords(step) + ".";
  }
  return Judge(text, evidence);
}

Finding CheckNoOutput(const Evidence& evidence) { return Judge(evidence.output, evidence); }

}  // namespace

std::vector<Rule> EvidenceRules() {
  return {
      {"no-exceptions", Severity::kError, "Neither the factory nor any operation throws",
       "Catch exceptions inside the plug-in and return false, 0 or null: nothing else catches them "
       "before they reach the host.",
       CheckNoExceptions},
      {"no-lifecycle-calls", Severity::kError, "It calls neither Initialize nor ShutDown",
       "Leave starting and stopping to the host: during a start or stop the call never "
       "returns, and from a draw it may unload the calling plug-in, or keep the library from "
       "stopping.",
       CheckNoLifecycleCalls},
      {"no-output", Severity::kWarning, "It prints nothing on standard output",
       "Print on standard error or not at all: standard output belongs to the host.",
       CheckNoOutput},
  };
}
