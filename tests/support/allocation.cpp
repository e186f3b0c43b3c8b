#include "tests/support/allocation.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

std::atomic<std::size_t> g_made;
std::atomic<std::size_t> g_freed;
std::atomic<std::size_t> g_failing;  // the value of g_made at which to fail

}  // namespace

void FailAllocation(std::size_t number) { g_failing = number == 0 ? 0 : g_made + number; }

std::size_t AllocationsMade() { return g_made; }
std::size_t AllocationsAlive() { return g_made - g_freed; }

void* operator new(std::size_t size) {
  const bool isFailing = ++g_made == g_failing;
  // Reject a huge size here: the sanitizers' malloc would end the process.
  void* const memory = isFailing || size > PTRDIFF_MAX ? nullptr : std::malloc(size ? size : 1);
  if (memory) return std::memset(memory, 0xA5, size);  // no code may rely on zeros
  ++g_freed;
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) { return ::operator new(size); }

void operator delete(void* memory) noexcept {
  if (memory) ++g_freed;
  std::free(memory);
}

void operator delete[](void* memory) noexcept { ::operator delete(memory); }
void operator delete(void* memory, std::size_t) noexcept { ::operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { ::operator delete(memory); }
