#ifndef TOOLS_RNGCTL_LOADER_LOADER_CALLS_H
#define TOOLS_RNGCTL_LOADER_LOADER_CALLS_H

#include <string>

/// What the process opens and closes with `dlopen` and `dlclose`.
///
/// This program defines both functions itself. The dynamic loader binds each name to its first
/// definition, so the calls of the library and of plug-ins arrive here, too. The definitions jump to the
/// C library's with the caller's return address in place: the loader takes the run path of the caller,
/// and exceptions of a plug-in's constructors find no frame of this program in their way.

/// The file of the code that calls, "" when it is in none.
struct LoaderCaller {
  const void* place;
  bool IsLibrary() const;  ///< whether it is the aggregator
  std::string File() const;
};

struct LoaderObserver {
  /// Before a file is opened; it is never null. False: opening it fails without being tried.
  bool (*mayOpen)(const char* file, LoaderCaller caller);
  void (*closes)(const std::string& file, LoaderCaller caller);  ///< before a handle is closed
};

/// From now on the observer, which must live as long as the process, is told of every call. Null: no
/// longer. It is called on the thread that calls, and must not throw.
void WatchLoaderCalls(const LoaderObserver* observer);

#endif
