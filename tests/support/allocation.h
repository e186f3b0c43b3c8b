#ifndef TESTS_SUPPORT_ALLOCATION_H
#define TESTS_SUPPORT_ALLOCATION_H

#include <cstddef>

/// The test programs replace the global operator new, for themselves and the libraries they open.

/// Lets the `number`th allocation from now on, counted from 1, throw std::bad_alloc; 0 disarms.
void FailAllocation(std::size_t number);

/// How many allocations were asked for, and how many are not yet freed, since the process began.
std::size_t AllocationsMade();
std::size_t AllocationsAlive();

#endif
