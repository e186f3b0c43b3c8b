#ifndef TESTS_COSTS_MEASURED_RUN_H
#define TESTS_COSTS_MEASURED_RUN_H

#include <string>
#include <vector>

/// One run of an operation in a process of its own, watched. They throw std::runtime_error when the
/// process does not end well or nothing was measured. `library` is "ours" or "bare".
long CountInstructions(const std::string& library, const std::string& operation);
long CountAllocations(const std::string& library, const std::string& operation);
std::vector<long> TraceSystemCalls(const std::string& library, const std::string& operation);

#endif
