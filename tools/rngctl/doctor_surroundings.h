#ifndef TOOLS_RNGCTL_DOCTOR_SURROUNDINGS_H
#define TOOLS_RNGCTL_DOCTOR_SURROUNDINGS_H

#include <string>

/// What is asked before any plug-in is looked for. The X library and the known-path service are other
/// people's code, too, so both are asked in a child, which sends "step": "end" when it is through.

/// Sends "isFound", and "reason" and "mend" when there is no display.
void ExamineDisplay();

/// Sends "isKnown", whether the directory of the settings could be found, and the fields of
/// `SettingsReport` by their names.
void ExamineSettings();

/// Sends "systemDirectories", where the loader looks last, in a process with one directory in its
/// LD_LIBRARY_PATH.
void ExamineSearch();

/// The run path that the file of a library, which is in the process, was linked with.
std::string RunPathOf(const std::string& library);

#endif
