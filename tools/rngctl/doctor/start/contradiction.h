#ifndef TOOLS_RNGCTL_DOCTOR_START_CONTRADICTION_H
#define TOOLS_RNGCTL_DOCTOR_START_CONTRADICTION_H

#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/doctor/start/evidence.h"

/// Why a plug-in fares differently in a start with all plug-ins than alone.
struct Contradiction {
  std::string
      words;  ///< "GetRng("sobol") returns null in a start with all plug-ins"; "": there is none
  std::string fix;
};

/// Adds it to the row's own verdict.
void Contradict(GeneratorReport& row, const Contradiction& contradiction);

/// For a plug-in that works alone, but whose generator GetRng did not return; `own` is its file. No
/// words if GetRng was not called.
Contradiction ExplainMissing(const GeneratorReport& row, const std::string& own,
                             const StartEvidence& start, std::chrono::seconds limit);

/// For any other plug-in that the start keeps although it fails alone, or the other way round.
Contradiction ExplainOther(const GeneratorReport& row, const std::string& own, bool isKept);

/// Whether the file is named like the plug-in of the row.
bool IsPluginNamed(const std::string& file, const std::string& libraryFile);

/// How a start that did not return ended, without the step: "crashed with signal 6 (Aborted)".
std::string DescribeStartEnd(const StartEvidence& start, std::chrono::seconds limit);

#endif
