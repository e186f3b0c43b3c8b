#include "tests/costs/counted_malloc.h"

#include <cstddef>

// The C library's own functions under the names by which it, too, can be reached.
extern "C" {
void* __libc_malloc(std::size_t size);                     // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* memory, std::size_t size);      // NOLINT(bugprone-reserved-identifier)
}

namespace {

long g_made;

}  // namespace

long MallocsMade() { return g_made; }

extern "C" {

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
  ++g_made;
  return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
  ++g_made;
  return __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size) {
  ++g_made;
  return __libc_realloc(memory, size);
}

}  // extern "C"
