#ifndef TOOLS_RNGCTL_CHECK_LOOKS_FAULTS_H
#define TOOLS_RNGCTL_CHECK_LOOKS_FAULTS_H

#include "tools/rngctl/check/looks/draws_of_size.h"

#include <optional>

/// Faults that are visible in the draws of one size. Each function says how likely its false alarms are; their
/// sum is in rules/looks_random.cpp.

/// Smaller draws have too few bytes for all but `FindUnwritten`.
inline constexpr std::size_t kSmallestJudged = 15;

/// Bytes that still have the values from before the draw.
std::optional<Fault> FindUnwritten(const DrawsOfSize& drawn);

/// Bytes that have the same values in each draw.
std::optional<Fault> FindConstant(const DrawsOfSize& drawn);

/// Runs of equal bytes, counters, a value that occurs too often, bytes that repeat those before them.
std::optional<Fault> FindPattern(const DrawsOfSize& drawn);

/// Bits or byte values that are not equally frequent.
std::optional<Fault> FindBias(const DrawsOfSize& drawn);

#endif
