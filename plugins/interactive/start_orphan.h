#ifndef PLUGINS_INTERACTIVE_START_ORPHAN_H
#define PLUGINS_INTERACTIVE_START_ORPHAN_H

/// The descriptor that such a program has instead of a command line.
constexpr int kOrphanSocket = 3;

/// Starts the program at `path` in the background, with one end of a pair of sockets as descriptor 3. Returns
/// the other end, or -1 if that is not possible. If the program fails only after it has started, for example
/// because a library is missing, that end reads as closed.
///
/// The program is not a child of this process: it sends no SIGCHLD, and no wait function sees it. It has the
/// default signal dispositions, an empty signal mask, /dev/null as standard streams, no other descriptors, and
/// the variables in `environment`, which ends with a null pointer.
///
/// Fails if children of this process would be in another PID namespace.
///
/// Threads: any.
int StartOrphan(const char* path, char* const* environment);

#endif
