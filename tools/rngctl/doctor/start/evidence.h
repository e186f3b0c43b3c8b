#ifndef TOOLS_RNGCTL_DOCTOR_START_EVIDENCE_H
#define TOOLS_RNGCTL_DOCTOR_START_EVIDENCE_H

#include "tools/rngctl/doctor/start/messages.h"
#include "tools/rngctl/process/child.h"

#include <chrono>
#include <optional>
#include <string>

/// What a start with all plug-ins showed.
struct StartEvidence {
  ChildResult result;                 ///< how the start went
  std::optional<StartAnswer> answer;  ///< what that child learnt
  /// A second start, made when the first one ended in its first lookup or the search for the default: it
  /// asks the rest, and may show which plug-in is to blame.
  std::optional<StartAnswer> second;

  /// The answer that says more about the generators; null without any.
  const StartAnswer* Fullest() const;

  /// Whether it shows what GetRng of the kind does. If the start itself fails, or its answer is not
  /// understood, a further start would not show more.
  bool ShowsLookup(const std::string& kind) const;

  /// Whether everything went well, up to the end of the process.
  bool IsComplete() const;
};

struct StartOrder {
  std::string kind;                   ///< looked up before anything else, unless empty
  std::vector<std::string> unopened;  ///< the kinds whose plug-ins are not to be opened
  std::chrono::seconds limit;         ///< for each step
  bool asksForDefault;                ///< false where the answer would never come
};

/// Starts the library in a child.
StartEvidence TryStart(const StartOrder& order);

/// The same without the second start: for a kind that an earlier start did not reach.
StartEvidence TryLookup(const StartOrder& order);

#endif
