#include "tools/rngctl/process/lifecycle_calls.h"

#include <atomic>
#include <dlfcn.h>

#include <rngaggregator/aggregator.h>

namespace {

std::atomic<LifecycleCallObserver> g_observer;
std::atomic<LibraryState> g_state;

template <typename Function>
Function* LibrarysOwn(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));  // linked: never null
}

}  // namespace

const char* NameOf(LifecycleFunction function) {
  return function == LifecycleFunction::kInitialize ? "Initialize" : "ShutDown";
}

void WatchLifecycleCalls(LifecycleCallObserver observer, LibraryState state) {
  g_state = state;
  g_observer = observer;
}

void StartLibrary(IRngSettings* settings) {
  LibrarysOwn<void(IRngSettings*)>("Initialize")(settings);
}

void StopLibrary() { LibrarysOwn<void()>("ShutDown")(); }

void Initialize(IRngSettings* settings) {
  if (const LifecycleCallObserver observer = g_observer) {
    return observer(LifecycleFunction::kInitialize);
  }
  StartLibrary(settings);
}

void ShutDown() {
  if (const LifecycleCallObserver observer = g_observer) {
    return observer(LifecycleFunction::kShutDown);
  }
  StopLibrary();
}

bool IsInitialized() {
  const bool isPretended = g_observer.load() && g_state == LibraryState::kPretended;
  return isPretended || LibrarysOwn<bool()>("IsInitialized")();
}
