#ifndef BENCHMARKS_BARE_PROFILE_H
#define BENCHMARKS_BARE_PROFILE_H

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// Reads and replaces one value of a profile file in a loop over the same calls of standard input
// and output that the library makes, with as little as possible between them.

// Copies the value of `key` in `section` to `buffer`; false when there is none.
bool ReadValue(const char* path, const char* section, const char* key, char* buffer, size_t size);

bool WriteValue(const char* path, const char* section, const char* key, const char* value);

#ifdef __cplusplus
}
#endif

#endif
