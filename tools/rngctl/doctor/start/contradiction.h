#ifndef TOOLS_RNGCTL_DOCTOR_START_CONTRADICTION_H
#define TOOLS_RNGCTL_DOCTOR_START_CONTRADICTION_H

#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/doctor/start/evidence.h"

/// Why a start with all plug-ins comes to another result than the plug-in alone.
struct Contradiction {
  std::string
      words;  ///< "GetRng("sobol") gives nothing in a start with all plug-ins"; "": there is none
  std::string fix;
};

/// Adds it to the row's own verdict.
void Contradict(GeneratorReport& row, const Contradiction& contradiction);

/// For a plug-in that is in order alone, and that GetRng of its kind did not find; `own` is its file. No
/// words when it was not looked for.
Contradiction ExplainMissing(const GeneratorReport& row, const std::string& own,
                             const StartEvidence& start, std::chrono::seconds limit);

/// For any other plug-in that is kept by the start and not alone, or the other way round.
Contradiction ExplainOther(const GeneratorReport& row, const std::string& own, bool isKept);

/// Whether the file is named like the plug-in of the row.
bool IsPluginNamed(const std::string& file, const std::string& libraryFile);

/// How the start ended that did not return, without the step: "crashed with signal 6 (Aborted)".
std::string DescribeStartEnd(const StartEvidence& start, std::chrono::seconds limit);

#endif
