#ifndef TOOLS_RNGCTL_PROCESS_LIFECYCLE_CALLS_H
#define TOOLS_RNGCTL_PROCESS_LIFECYCLE_CALLS_H

#include <rngaggregator/provider.h>

/// A plug-in must not call `Initialize` or `ShutDown`: in a host the call would deadlock.
///
/// This program defines the two functions and `IsInitialized` itself. The dynamic loader binds each name
/// to its first definition, and searches the program before the libraries that the program is linked
/// with; so a plug-in's call arrives here, even though it is linked with the library. The definitions
/// here forward to the library's, which `RTLD_NEXT` finds behind the program.

enum class LifecycleFunction { kInitialize, kShutDown };
constexpr LifecycleFunction LastOf(LifecycleFunction) { return LifecycleFunction::kShutDown; }

/// "Initialize", "ShutDown".
const char* NameOf(LifecycleFunction function);

using LifecycleCallObserver = void (*)(LifecycleFunction function);

/// Whether `IsInitialized` tells plug-ins that the library is started, although it is not.
enum class LibraryState { kPretended, kReal };

/// From now on the two functions only tell `observer` which of them was called. `IsInitialized` returns
/// true, as it does during a start, unless it is to be real.
void WatchLifecycleCalls(LifecycleCallObserver observer,
                         LibraryState state = LibraryState::kPretended);

/// Start and stop the library, also while calls are watched. What plug-ins throw passes through.
void StartLibrary(IRngSettings* settings);
void StopLibrary();

#endif
