#ifndef TESTS_RNGCTL_CHECK_BREACH_H
#define TESTS_RNGCTL_CHECK_BREACH_H

#include "tests/rngctl/check/check.h"

#include <ostream>
#include <string>

/// What a plug-in that breaks a rule is expected to fail.
struct Breach {
  std::string variant;
  std::string failed;         // all the checks that fail
  std::string found;          // part of the fault that the first of them reports
  std::string fix = "";       // if it is not the rule's own
  std::string severity = "";  // if it is not the rule's own
};

inline void PrintTo(const Breach& breach, std::ostream* stream) { *stream << breach.variant; }

/// The result is that of `rngctl check --json`.
void ExpectBreach(const Breach& breach, const Result& result);

/// What to do about an operation that does not return, or ends the process, in any check.
inline constexpr char kReturnSoon[] =
    "Make it return soon: provide the device or input that it waits for, or allow more time with "
    "--timeout.";
inline constexpr char kCompareSettings[] =
    "Compare the settings, and what they return, with null before using them. If that is not the "
    "cause, find the place with a debugger.";
inline constexpr char kUseDebugger[] =
    "No operation may end the process: find the place with a debugger, for example gdb -ex \"set "
    "follow-fork-mode child\" --args rngctl read NAME -n 32.";
inline constexpr char kNoThrowOnOpening[] =
    "Static constructors must not throw or exit: move what may fail to IsAvailable, and return "
    "false there.";
inline constexpr char kNoThrowOnClosing[] =
    "Static destructors must not throw or exit: move what may fail to Release.";
inline constexpr char kFreeCancel[] =
    "Cancel must not take a lock that a waiting draw holds: let the draw wait on a condition "
    "variable, which releases the lock, or set an atomic flag.";

#endif
