#ifndef TESTS_SESSION_LINKED_LIBRARY_H
#define TESTS_SESSION_LINKED_LIBRARY_H

#include <atomic>

/// This program has the library's functions, as a host that is linked with it, but they are those of the library in
/// the tree, where the plug-ins of the case are. It is opened at the first call.

/// How many calls of `Initialize` have not been matched by one of `ShutDown`, also those that threw.
extern std::atomic<int> g_unmatchedStarts;

#endif
