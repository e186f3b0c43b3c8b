// cost_host ours|bare OPERATION: makes one operation ready, runs it until every cache is filled, and
// then once more, for a tool that watches: the instructions of that run alone are collected, its
// system calls stand between two markers, its allocations are printed where they are counted.

#include "tests/costs/cost_host.h"

#include "benchmarks/machine/operations.h"
#include "tests/costs/counted_malloc.h"

#include <cstdint>
#include <cstring>
#include <exception>
#include <iostream>
#include <unistd.h>
#include <valgrind/callgrind.h>

namespace {

void Mark() { ::syscall(kMarkerCall, kMarkerArgument); }

// How near to the end of a page its text lies decides how many instructions a string function takes,
// and how far down the stack begins depends on the environment. So the run begins at the top of a
// page, always.
__attribute__((noinline)) void RunFromTopOfPage(const ReadyOperation& operation) {
  constexpr std::uintptr_t kPage = 4096;
  void* const room =
      __builtin_alloca(reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) % kPage);
  asm volatile("" : : "r"(room) : "memory");  // or the compiler would leave it out
  operation.Run();
}

void Measure(const ReadyOperation& operation) {
  RunFromTopOfPage(operation);
  RunFromTopOfPage(operation);
  const long before = MallocsMade();
  Mark();
  CALLGRIND_START_INSTRUMENTATION;
  RunFromTopOfPage(operation);
  CALLGRIND_STOP_INSTRUMENTATION;
  Mark();
  std::cout << MallocsMade() - before << '\n';
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 3) return 2;
  const bool isOurs = std::strcmp(arguments[1], "ours") == 0;
  Measure(
      {isOurs ? Machine::Library::kOurs : Machine::Library::kBare, FindOperation(arguments[2])});
  return 0;
} catch (const std::exception& problem) {
  std::cerr << problem.what() << '\n';
  return 1;
}
