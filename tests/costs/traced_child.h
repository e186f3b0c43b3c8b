#ifndef TESTS_COSTS_TRACED_CHILD_H
#define TESTS_COSTS_TRACED_CHILD_H

#include <string>
#include <vector>

/// Runs a program under ptrace and returns the numbers of the system calls that it made between the
/// two markers of cost_host.h, in order. Throws std::runtime_error when it may not be traced, does
/// not end with 0 or does not set two markers.
std::vector<long> TraceMarkedCalls(const std::vector<std::string>& command);

#endif
