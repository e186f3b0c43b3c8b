#ifndef PLUGINS_INTERACTIVE_START_HELPER_H
#define PLUGINS_INTERACTIVE_START_HELPER_H

/// Starts the program at `path` as `StartOrphan` does, and returns the same. Of this process's environment, the
/// program gets the few variables that matter to it.
///
/// Threads: any.
int StartHelper(const char* path);

#endif
