#ifndef TESTS_COSTS_COUNTED_MALLOC_H
#define TESTS_COSTS_COUNTED_MALLOC_H

/// Calls of malloc, calloc and realloc in the process: those of the library, through operator new,
/// and those of the C library and the dynamic loader on its behalf, which the bare loop makes, too.
long MallocsMade();

#endif
