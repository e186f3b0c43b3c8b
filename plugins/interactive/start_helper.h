#ifndef PLUGINS_INTERACTIVE_START_HELPER_H
#define PLUGINS_INTERACTIVE_START_HELPER_H

/// Starts the program at `path` in the background, with one end of a pair of sockets as descriptor 3. Returns
/// the other end, or -1 if that is not possible. If the program
/// fails only after it has started, for example because a library is missing, that end reads as closed.
///
/// The program is not a child of this process: it sends no SIGCHLD, and no wait function sees it. It has the
/// default signal dispositions, an empty signal mask, /dev/null as standard streams, no other descriptors,
/// and the few environment variables that matter to it.
///
/// Threads: any.
int StartHelper(const char* path);

#endif
