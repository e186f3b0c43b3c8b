#ifndef TOOLS_RNGCTL_HOST_H
#define TOOLS_RNGCTL_HOST_H

#include <stdexcept>
#include <string>

#include <rngaggregator/aggregator.h>

enum ExitStatus { kDone = 0, kNegativeAnswer = 1, kWrongUsage = 2, kNothingUsable = 3 };

/// The command ends here: a sentence for the user, and the exit status.
class Refusal : public std::runtime_error {
 public:
  Refusal(ExitStatus exitStatus, const std::string& sentence)
      : std::runtime_error(sentence), status(exitStatus) {}
  const ExitStatus status;
};

/// The aggregator, started with the built-in settings for as long as this object lives.
class StartedAggregator {
 public:
  StartedAggregator();
  StartedAggregator(const StartedAggregator&) = delete;
  StartedAggregator& operator=(const StartedAggregator&) = delete;
  ~StartedAggregator() noexcept(false);  // a plug-in's Release may throw
};

/// A provider's text, "" when it has none: `ReadText(rng, &IRngProvider::GetName)`.
std::string ReadText(IRngProvider& provider, std::int32_t (IRngProvider::*operation)(char* buffer));

/// Keeps a plug-in's text from steering the terminal.
std::string Printable(std::string text);

/// How many characters of UTF-8 there are, as columns count them.
std::size_t CountColumns(const std::string& text);

/// With blanks behind it up to so many columns.
std::string Padded(const std::string& text, std::size_t columns);

/// Before a sentence on standard error, or the end: all of the result is written, or a `Refusal` says
/// that it cannot be.
void FinishOutput();

std::string Quoted(const std::string& text);

#endif
