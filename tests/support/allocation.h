#ifndef TESTS_SUPPORT_ALLOCATION_H
#define TESTS_SUPPORT_ALLOCATION_H

#include <cstddef>

/// The test programs replace the global operator new, for themselves and the libraries they open.

/// Makes the `number`th allocation from now on, counted from 1, throw std::bad_alloc; 0 cancels this.
void FailAllocation(std::size_t number);

/// The number of allocations requested since the process began, and of those not yet freed.
std::size_t AllocationsMade();
std::size_t AllocationsAlive();

#endif
