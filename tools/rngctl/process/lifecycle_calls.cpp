#include "tools/rngctl/process/lifecycle_calls.h"

#include <atomic>
#include <dlfcn.h>

#include <rngaggregator/aggregator.h>

namespace {

std::atomic<LifecycleCallObserver> g_observer;

template <typename Function>
Function* LibrarysOwn(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));  // linked: never null
}

}  // namespace

const char* NameOf(LifecycleFunction function) {
  return function == LifecycleFunction::kInitialize ? "Initialize" : "ShutDown";
}

void WatchLifecycleCalls(LifecycleCallObserver observer) { g_observer = observer; }

void Initialize(IRngSettings* settings) {
  if (const LifecycleCallObserver observer = g_observer) {
    return observer(LifecycleFunction::kInitialize);
  }
  LibrarysOwn<void(IRngSettings*)>("Initialize")(settings);
}

void ShutDown() {
  if (const LifecycleCallObserver observer = g_observer) {
    return observer(LifecycleFunction::kShutDown);
  }
  LibrarysOwn<void()>("ShutDown")();
}

bool IsInitialized() { return g_observer.load() || LibrarysOwn<bool()>("IsInitialized")(); }
