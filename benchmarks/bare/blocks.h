#ifndef BENCHMARKS_BARE_BLOCKS_H
#define BENCHMARKS_BARE_BLOCKS_H

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// How fast a profile file could be read and rewritten without standard input and output: plain read
// and write over a buffer that holds the whole file, with memchr to find lines. It ignores the
// library's rules (line lengths, CRs, letter case), so it is a limit, not an alternative.

bool ReadValueInBlocks(const char* path, const char* section, const char* key, char* buffer,
                       size_t size);
bool WriteValueInBlocks(const char* path, const char* section, const char* key, const char* value);

#ifdef __cplusplus
}
#endif

#endif
