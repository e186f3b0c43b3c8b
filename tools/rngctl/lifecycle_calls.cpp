#include "lifecycle_calls.h"

#include <atomic>
#include <dlfcn.h>

#include <rngaggregator/aggregator.h>

namespace {

std::atomic<LifecycleCallRecord> g_record;

template <typename Function>
Function* LibrarysOwn(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));  // linked: it is there
}

}  // namespace

void WatchLifecycleCalls(LifecycleCallRecord record) { g_record = record; }

void Initialize(IRngSettings* settings) {
  if (const LifecycleCallRecord record = g_record) return record("Initialize");
  LibrarysOwn<void(IRngSettings*)>("Initialize")(settings);
}

void ShutDown() {
  if (const LifecycleCallRecord record = g_record) return record("ShutDown");
  LibrarysOwn<void()>("ShutDown")();
}

bool IsInitialized() { return g_record.load() || LibrarysOwn<bool()>("IsInitialized")(); }
