#ifndef TOOLS_RNGCTL_CHANNEL_LAST_WORDS_H
#define TOOLS_RNGCTL_CHANNEL_LAST_WORDS_H

#include <string>

/// In a child, once: installs a handler for std::terminate. It tells the parent, with the message of the
/// uncaught exception, and calls the previous handler. It does not run for a plug-in that has its own C++
/// runtime.
void WatchTermination();

/// The message of the exception that is being handled, cut to a size that can be sent; "" if it has none.
/// Its class must still be loaded.
std::string MessageOfException();

#endif
