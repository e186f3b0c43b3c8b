#ifndef TOOLS_RNGCTL_REFUSAL_H
#define TOOLS_RNGCTL_REFUSAL_H

#include <stdexcept>
#include <string>
#include <utility>

enum ExitStatus { kDone = 0, kNegativeAnswer = 1, kWrongUsage = 2, kNothingUsable = 3 };

/// Advice when this process may open no more files (EMFILE).
inline constexpr char kMoreDescriptors[] = "Allow more with ulimit -n; 16 are enough.";

/// Ends the command: the exit status, a sentence for the user, which may contain text from outside, and
/// perhaps a line of advice.
class Refusal : public std::runtime_error {
 public:
  Refusal(ExitStatus exitStatus, const std::string& sentence, std::string lineOfAdvice = "")
      : std::runtime_error(sentence), status(exitStatus), advice(std::move(lineOfAdvice)) {}
  const ExitStatus status;
  const std::string advice;
};

#endif
