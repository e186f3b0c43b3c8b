#ifndef TOOLS_RNGCTL_REFUSAL_H
#define TOOLS_RNGCTL_REFUSAL_H

#include <stdexcept>
#include <string>

enum ExitStatus { kDone = 0, kNegativeAnswer = 1, kWrongUsage = 2, kNothingUsable = 3 };

/// Ends the command: a sentence for the user, and the exit status.
class Refusal : public std::runtime_error {
 public:
  Refusal(ExitStatus exitStatus, const std::string& sentence)
      : std::runtime_error(sentence), status(exitStatus) {}
  const ExitStatus status;
};

#endif
