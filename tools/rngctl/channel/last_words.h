#ifndef TOOLS_RNGCTL_CHANNEL_LAST_WORDS_H
#define TOOLS_RNGCTL_CHANNEL_LAST_WORDS_H

#include <string>

/// In a child, once: if std::terminate ends it, the parent is told so, with the message of the exception
/// that was not caught. Then the handler that was there before runs. A plug-in with a C++ runtime of its
/// own does not reach this one.
void WatchTermination();

/// The message of the exception that is being handled, cut to a size that can be sent; "" if it has none.
/// Its class must still be loaded.
std::string MessageOfException();

#endif
