#ifndef TOOLS_RNGCTL_DOCTOR_ROW_H
#define TOOLS_RNGCTL_DOCTOR_ROW_H

#include "providers/catalogue.h"

/// In a child: treats the plug-in of one row as the start and the stop of the library do, but for the
/// display, and sends what is seen at once, since the next call may be the last. `fileToOpen` is what the
/// library finds by its bare name: opened by its path, since the library's run path finds the plug-in,
/// but not what the plug-in needs. Sent are:
///
///     step       what is done now; "end" when nothing is left to do
///     file       what the loader took
///     openError  the loader's words when it could not be opened
///     isKept     the library would list it
///     name       what it reports as its name
///     nameFault  why the name cannot be used
///     isFlagless it reports no capability bits
///     called     Initialize or ShutDown, which it has called in this step; then nothing more comes
///     thrown     what it has thrown in this step
///     verdict    all went its way up to this; not sent when the plug-in ends the process
///     stays      the plug-in is in the process after it was closed
void ExamineRow(const ProviderCatalogueEntry& row, const std::string& fileToOpen);

/// In another child: looks up at once all that the plug-in needs, which the library does not ask for,
/// and sends the loader's words as "bindError" when something is missing, else as "borrowed" what only
/// this program happens to have. Ends the process, so that nothing is closed, which is not the matter here.
[[noreturn]] void ExamineBinding(const std::string& fileToOpen);

#endif
