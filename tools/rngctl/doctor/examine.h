#ifndef TOOLS_RNGCTL_DOCTOR_EXAMINE_H
#define TOOLS_RNGCTL_DOCTOR_EXAMINE_H

#include "providers/catalogue.h"

#include <string>

/// The examinations, each for a child of its own: it may not survive what it calls. Each sends the
/// answer that bears its name.

/// Where the loader searches last. For a process whose LD_LIBRARY_PATH is the one directory `given`.
void ExamineSearch(const std::string& given);

/// The known-path service and the settings file.
void ExamineSettings();

void ExamineDisplay();

/// Treats the plug-in of one row as the library's start and stop do, but for the display.
///
/// `path` is the file that the library finds by its bare name. It is opened by its path: the library's
/// run path finds the plug-in, but not the plug-in's own dependencies.
void ExaminePlugin(const ProviderCatalogueEntry& row, const std::string& path);

/// Looks up all symbols of the plug-in at once, which the library does not ask for. Ends the process, so
/// that nothing is closed: that is not the question here.
[[noreturn]] void ExamineBinding(const std::string& path);

/// Starts the library itself with all its plug-ins, asks for the configured default, and stops, as a
/// host does.
void ExamineStart();

#endif
