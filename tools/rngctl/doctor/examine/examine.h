#ifndef TOOLS_RNGCTL_DOCTOR_EXAMINE_EXAMINE_H
#define TOOLS_RNGCTL_DOCTOR_EXAMINE_EXAMINE_H

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/messages.h"

#include <string>

/// The examinations. Each runs in its own child, which may not survive what it calls, and sends the
/// answer of the same name.

/// Finds where the loader searches last. LD_LIBRARY_PATH of this process must be the one directory
/// `given`.
void ExamineSearch(const std::string& given);

/// The known-path service and the settings file.
void ExamineSettings();

void ExamineDisplay();

/// Treats the plug-in of one row as the library's start and stop do, except that it does not probe the
/// display.
///
/// `path` is the file that the library finds by its bare name. It is opened by its path, because the
/// library's run path applies to the plug-in, but not to the plug-in's own dependencies.
void ExaminePlugin(const ProviderCatalogueEntry& row, const std::string& path);

/// Binds all symbols of the plug-in at once, which the library does not do. Ends the process, so that
/// the plug-in is not closed: closing is not examined here.
[[noreturn]] void ExamineBinding(const std::string& path);

/// Starts the library with all its plug-ins, asks it what a host asks, and stops it. `question` says what
/// it is asked first: a question that ends the process hides the answers to those after it.
void ExamineStart(const DoctorQuestion& question);

#endif
