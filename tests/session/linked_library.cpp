#include "tests/session/linked_library.h"

#include "tests/support/aggregator_library.h"

std::atomic<int> g_unmatchedStarts = 0;

namespace {

const AggregatorLibrary& Library() {
  static const AggregatorLibrary library;
  return library;
}

}  // namespace

void Initialize(IRngSettings* settings) {
  const AggregatorLibrary& library = Library();
  ++g_unmatchedStarts;
  library.Initialize(settings);
}

void ShutDown() {
  --g_unmatchedStarts;
  Library().ShutDown();
}

bool IsInitialized() { return Library().IsInitialized(); }
IRngProvider* GetRng(const char* name) { return Library().GetRng(name); }
std::int32_t GetDefaultRng(DefaultRngInfo* info, std::uint32_t mask) {
  return Library().GetDefaultRng(info, mask);
}
IRngSettings* GetDefaultSettings() { return Library().GetDefaultSettings(); }
