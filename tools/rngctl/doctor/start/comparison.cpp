#include "tools/rngctl/doctor/start/comparison.h"

#include "tools/rngctl/doctor/disturbance.h"
#include "tools/rngctl/doctor/start/contradiction.h"
#include "tools/rngctl/doctor/start/started_library.h"
#include "tools/rngctl/terminal/text.h"

namespace {

// What the start shows about one row.
struct Fate {
  std::string own;  // the file of its plug-in
  const KindLookup* lookup = nullptr;
  const StartedGenerator* found = nullptr;  // by the lookup
  bool isFound = false;                     // and it is the plug-in's own
  bool isKept = false;
};

// A generator may lie outside its plug-in, in a dependency or on the heap: then it counts as its own.
bool IsOwn(const StartedGenerator& generator, const std::string& own, const StartAnswer& answer) {
  return LiesIn(generator, own) || ForeignFileOf(generator, own, answer).empty();
}

// Nobody notices: programs reach the generator neither by its name nor by its flags.
bool IsHidden(const GeneratorReport& row) {
  return row.isKept && row.isFlagless && row.verdict != DoctorVerdict::kLoaded;
}

Fate FindFate(const GeneratorReport& row, const StartAnswer& answer) {
  Fate fate;
  const std::string taken = TakenFor(row.kind, answer);
  fate.own = IsPluginNamed(taken, row.libraryFile) ? taken : row.file;
  fate.lookup = FindLookup(row.kind, answer);
  fate.found = fate.lookup ? FindObject(fate.lookup->object, answer) : nullptr;
  fate.isFound = fate.found && IsOwn(*fate.found, fate.own, answer);
  const bool isListed = FindIn(fate.own, answer) && KindOfFile(fate.own, answer) == row.kind;
  fate.isKept = fate.isFound || isListed || (IsHidden(row) && !taken.empty());
  // A plug-in whose file was closed does not count as kept, even if it is listed.
  if (!answer.isListed && !taken.empty()) fate.isKept = row.isKept;
  return fate;
}

// The plug-in works in the start, whatever happened to it alone.
void PutFound(GeneratorReport& row) {
  row.warnings.push_back("Examined alone, it fails: " + row.summary +
                         ". Whether it works depends on the other plug-ins that are loaded.");
  row.name = row.kind;
  Put(row, DoctorVerdict::kLoaded, "loaded as " + Quoted(row.kind), "");
}

// The start did not return.
void CompareWithFailure(GeneratorReport& row, const StartEvidence& start,
                        std::chrono::seconds limit) {
  const StartAnswer& answer = *start.answer;
  const bool isCulprit = answer.step == StartStep::kTreat && answer.subject == row.kind;
  if (!isCulprit || IsDisturbance(row) || row.verdict == DoctorVerdict::kInternalError) return;
  row.isKept = false;
  Contradict(row, {"in a start with all plug-ins it " + DescribeStartEnd(start, limit),
                   "Check what else is installed, and report this to the vendor: every program "
                   "that starts the library fails the same way."});
}

}  // namespace

void CompareWithStart(GeneratorReport& row, const StartEvidence& start,
                      std::chrono::seconds limit) {
  if (!start.answer) return;
  if (!start.answer->seconds) return CompareWithFailure(row, start, limit);
  const StartAnswer& answer = *start.Fullest();
  const Fate fate = FindFate(row, answer);
  const bool wasKept = row.isKept;
  if (row.verdict == DoctorVerdict::kInternalError) {
    row.isKept = fate.isKept;  // only the start shows it
  } else if (fate.isFound) {
    row.isKept = true;
    // What disturbs programs alone does so in the start, too, unless all went well.
    const bool isBetter = row.verdict != DoctorVerdict::kLoaded && !IsDisturbance(row);
    if (isBetter || (IsDisturbance(row) && start.IsComplete())) PutFound(row);
  } else if (row.verdict == DoctorVerdict::kLoaded) {
    const Contradiction found = ExplainMissing(row, fate.own, start, limit);
    if (found.words.empty()) return;
    row.isKept = fate.isKept;
    Contradict(row, found);
  } else if (fate.lookup && fate.isKept != wasKept) {
    row.isKept = fate.isKept;
    Contradict(row, ExplainOther(row, fate.own, fate.isKept));
  }
}
