#ifndef TOOLS_RNGCTL_REFUSAL_H
#define TOOLS_RNGCTL_REFUSAL_H

#include <cerrno>
#include <stdexcept>
#include <string>
#include <utility>

enum ExitStatus { kDone = 0, kNegativeAnswer = 1, kWrongUsage = 2, kNothingUsable = 3 };

/// Ends the command: the exit status, a sentence for the user, which may contain text from outside, and
/// perhaps a line of advice.
class Refusal : public std::runtime_error {
 public:
  Refusal(ExitStatus exitStatus, const std::string& sentence, std::string lineOfAdvice = "")
      : std::runtime_error(sentence), status(exitStatus), advice(std::move(lineOfAdvice)) {}
  const ExitStatus status;
  const std::string advice;
};

/// Advice where the errno `error` means that too many files are open, in this process or in the whole system; ""
/// for others.
inline const char* HowToOpenMore(int error) {
  if (error == EMFILE) return "Allow more with ulimit -n; 16 are enough.";
  return error == ENFILE ? "Close some programs, and try again." : "";
}

#endif
