#ifndef BENCHMARKS_BARE_PROFILE_H
#define BENCHMARKS_BARE_PROFILE_H

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// One value of a profile file read and replaced by a loop over the calls of standard input and
// output that the library makes, with the least between them.

// The value of `key` in `section` into `buffer`; false when there is none.
bool ReadValue(const char* path, const char* section, const char* key, char* buffer, size_t size);

bool WriteValue(const char* path, const char* section, const char* key, const char* value);

#ifdef __cplusplus
}
#endif

#endif
