#ifndef TOOLS_RNGCTL_DOCTOR_START_H
#define TOOLS_RNGCTL_DOCTOR_START_H

/// In a child: starts the library itself with all its plug-ins, asks for the configured default, and
/// stops, as a host does. What is seen is sent at once, since the next call may be the last:
///
///     step          what is done now: "start", "default", "stop"; "end" when all is done
///     opened        the plug-ins' files that are in the process after the start
///     findsDefault  there is a generator of the configured name
///     thrown        the step has ended with an exception; then nothing more comes
void ExamineStart();

#endif
