#ifndef TOOLS_RNGCTL_DOCTOR_START_MESSAGES_H
#define TOOLS_RNGCTL_DOCTOR_START_MESSAGES_H

#include "tools/rngctl/doctor/messages.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the child answers that starts the library with all plug-ins, asks it what a host asks, and stops
/// it. As in all answers, `step` is what the child is doing.

enum class StartStep {
  kBegin,
  kDisplay,  ///< the library looks for the X display
  kTreat,    ///< it loads or skips the plug-in of the kind `subject`
  kLookUp,   ///< GetRng of the kind `subject`
  kDefault,
  kDevice,  ///< the generator of the kind `subject` is asked to select the configured device
  kList,
  kName,  ///< GetName of the generator whose code is in the file `subject`
  kStop,  ///< `subject` is the file that is being closed, if any
  kEnd
};
constexpr StartStep LastOf(StartStep) { return StartStep::kEnd; }

/// A generator of the started library.
struct StartedGenerator {
  std::uint64_t object = 0;               ///< its address, to recognise it
  std::string tableFile = {};             ///< the file with its table of operations, "" for none
  std::string codeFile = {};              ///< the file with the code of its first operation
  std::optional<ReportedName> name = {};  ///< empty when it was not asked, or has thrown
};
RNGCTL_MESSAGE(StartedGenerator, object, tableFile, codeFile, name)

enum class LookupEnd { kNothing, kFound, kThrew };
constexpr LookupEnd LastOf(LookupEnd) { return LookupEnd::kThrew; }

/// What GetRng of a kind returned or threw.
struct KindLookup {
  std::string kind = {};
  LookupEnd end = LookupEnd::kNothing;
  std::uint64_t object = 0;    ///< of the generator that was found
  std::string exception = {};  ///< its message, if it has one
};
RNGCTL_MESSAGE(KindLookup, kind, end, object, exception)

/// The file in the process that the loader finds under the name of a kind's plug-in after the start.
struct TakenFile {
  std::string kind = {};
  std::string file = {};
};
RNGCTL_MESSAGE(TakenFile, kind, file)

/// The time that the start spent on the plug-in of a kind, or on the display for the kind "".
struct StartPart {
  std::string kind = {};
  double seconds = 0;
};
RNGCTL_MESSAGE(StartPart, kind, seconds)

/// A plug-in's file closed a handle of another plug-in's file.
struct ForeignClose {
  std::string closer = {};
  std::string closed = {};
};
RNGCTL_MESSAGE(ForeignClose, closer, closed)

struct StartAnswer {
  StartStep step = StartStep::kBegin;
  std::string subject = {};
  std::optional<double> seconds = {};  ///< that the start took; empty: it did not return
  std::vector<StartPart> parts = {};
  std::vector<TakenFile> taken = {};
  std::vector<KindLookup> lookups = {};
  bool isListed = false;                          ///< GetAvailableRng has returned
  std::vector<StartedGenerator> generators = {};  ///< in the order in which they were seen
  std::optional<bool> findsDefault = {};  ///< a generator has the configured name; empty: not asked
  std::optional<bool> acceptsDevice =
      {};  ///< that generator, the configured device; empty: not asked
  std::optional<StartStep> threwIn = {};         ///< the first step that an exception ended
  std::optional<LifecycleFunction> called = {};  ///< by a plug-in, in the step `calledIn`
  std::optional<StartStep> calledIn = {};
  std::vector<ForeignClose> closes = {};
  std::vector<std::string> changes = {};  ///< what is different after the start, in sentences
};
RNGCTL_MESSAGE(StartAnswer, step, subject, seconds, parts, taken, lookups, isListed, generators,
               findsDefault, acceptsDevice, threwIn, called, calledIn, closes, changes)

#endif
