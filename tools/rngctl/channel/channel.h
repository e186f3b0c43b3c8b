#ifndef TOOLS_RNGCTL_CHANNEL_CHANNEL_H
#define TOOLS_RNGCTL_CHANNEL_CHANNEL_H

#include <optional>
#include <string>

/// Encoded messages on a pair of sockets: the request to a child, and what the child sends back.

/// False when nobody reads at the other end, or `descriptor` is not a socket. It then writes nothing: a
/// plug-in may have closed the descriptor and opened a file of its own with the same number.
bool WriteMessage(int descriptor, const std::string& bytes);

/// The last complete message in all that a child has sent. An incomplete one at the end is ignored: the
/// child ended while it sent it. Nothing when there is no complete message, or when something else was
/// written among the messages.
std::optional<std::string> FindLastMessage(const std::string& sent);

/// Why the child terminated, as it said itself; "" if it did not. Not one of the messages.
std::string FindLastWords(const std::string& sent);

/// In a child: opens its end, a descriptor that the parent has chosen, and returns the bytes of the
/// request. Nothing when there is no parent that sent one.
std::optional<std::string> OpenChannel(int descriptor);

/// In a child: whether the parent still has its end.
bool IsHeard(int descriptor);

/// In a child: sends a message to the parent. Any thread; messages do not mix.
void SendMessage(const std::string& bytes);

/// In a child that is about to terminate: tells the parent why.
void SendLastWords(const std::string& words);

#endif
