#ifndef TOOLS_RNGCTL_LIFECYCLE_CALLS_H
#define TOOLS_RNGCTL_LIFECYCLE_CALLS_H

/// A plug-in must not call `Initialize` or `ShutDown`: in a host it would wait for itself for ever.
/// This program's own definitions of the two come before the library's, and hand the call on.

using LifecycleCallRecord = void (*)(const char* function);

/// From now on the two do nothing but tell `record` which of them was called, and `IsInitialized` says
/// yes, as it does in a start.
void WatchLifecycleCalls(LifecycleCallRecord record);

#endif
