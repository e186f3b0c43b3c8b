#ifndef TOOLS_RNGCTL_CHECKS_H
#define TOOLS_RNGCTL_CHECKS_H

#include "check_subject.h"
#include "watched_plugin.h"

/// The checks themselves, in the order of their list.

// --- in the file (check_file.cpp)
Finding CheckCataloguePair(const CheckSubject& subject);
Finding CheckExports(const CheckSubject& subject);
Finding CheckUniqueSymbols(const CheckSubject& subject);
Finding CheckStaticTls(const CheckSubject& subject);
Finding CheckExecutableStack(const CheckSubject& subject);

// --- the start (check_start.cpp), in a child as all that follow
Finding CheckOpens(WatchedPlugin& plugin);
Finding CheckFactory(WatchedPlugin& plugin);
Finding CheckNullSettings(WatchedPlugin& plugin);
Finding CheckEmptySettings(WatchedPlugin& plugin);
Finding CheckBuiltInSettings(WatchedPlugin& plugin);
Finding CheckReload(WatchedPlugin& plugin);
Finding CheckAvailable(WatchedPlugin& plugin);

// --- what it answers (check_texts.cpp, check_answers.cpp)
Finding CheckName(WatchedPlugin& plugin);
Finding CheckNameLength(WatchedPlugin& plugin);
Finding CheckNameInCatalogue(WatchedPlugin& plugin);
Finding CheckDescription(WatchedPlugin& plugin);
Finding CheckDescriptionIsALine(WatchedPlugin& plugin);
Finding CheckHardwareId(WatchedPlugin& plugin);
Finding CheckFlagsStable(WatchedPlugin& plugin);
Finding CheckFlagsNotZero(WatchedPlugin& plugin);
Finding CheckSelfTest(WatchedPlugin& plugin);
Finding CheckAnyDevice(WatchedPlugin& plugin);
Finding CheckUnknownDevice(WatchedPlugin& plugin);
Finding CheckOwnDevice(WatchedPlugin& plugin);

// --- draws (check_draws.cpp, check_cancel.cpp)
Finding CheckEmptyDraw(WatchedPlugin& plugin);
Finding CheckCancelEndsDraws(WatchedPlugin& plugin);
Finding CheckFailedDrawIsZero(WatchedPlugin& plugin);
Finding CheckDrawSucceeds(WatchedPlugin& plugin);
Finding CheckDrawFillsBuffer(WatchedPlugin& plugin);
Finding CheckDrawsDiffer(WatchedPlugin& plugin);

// --- several threads (check_threads.cpp)
Finding CheckConcurrentCalls(WatchedPlugin& plugin);

// --- the end (check_release.cpp, check_cycles.cpp)
Finding CheckReleaseEndsThreads(WatchedPlugin& plugin);
Finding CheckReleaseClosesFiles(WatchedPlugin& plugin);
Finding CheckNoHandlersLeft(WatchedPlugin& plugin);
Finding CheckCleanExit(WatchedPlugin& plugin);
Finding CheckExitWithoutRelease(WatchedPlugin& plugin);
Finding CheckUnmapped(WatchedPlugin& plugin);
Finding CheckLoadCycles(WatchedPlugin& plugin);

/// In a child: sends what a check has found.
void SendFinding(const Finding& finding);

#endif
