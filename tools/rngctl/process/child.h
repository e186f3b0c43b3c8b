#ifndef TOOLS_RNGCTL_PROCESS_CHILD_H
#define TOOLS_RNGCTL_PROCESS_CHILD_H

#include "tools/rngctl/channel/channel.h"
#include "tools/rngctl/channel/messages.h"
#include "tools/rngctl/channel/printed_lines.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

/// Plug-in code may crash, exit or hang, so it runs in a child process: this program again, with a
/// hidden command. The parent sends one request. The child sends all that it knows each time it learns
/// more. So only the last message counts, and it survives whatever ends the child.

enum class ChildEnd { kExited, kSignalled, kStopped, kTimedOut };

/// Whether a limit is for a child's whole life, or starts again with each message.
enum class LimitOf { kLife, kSilence };

struct ChildOrder {
  std::string command;  ///< the hidden command
  std::string request;  ///< encoded
  std::chrono::milliseconds limit;
  LimitOf limited = LimitOf::kLife;
  std::string libraryPath = {};  ///< its LD_LIBRARY_PATH; empty: the one of this process
  bool endsDescendants = false;  ///< kills what the child leaves running
  std::chrono::milliseconds limitOfAll = {};  ///< for its whole life, besides the other; zero: none
  /// If set, standard error is collected, and this is told what the child printed there before it
  /// became quiet: it may be a question to the user. Otherwise the child has this process's.
  std::function<void(const std::string& text)> whileItWaits = {};
};

struct ChildResult {
  std::optional<std::string> lastMessage;  ///< encoded
  ChildEnd end;
  int code;                              ///< the exit status or the signal
  PrintedLines output;                   ///< on standard output
  PrintedLines errors;                   ///< on standard error, if that is collected
  std::vector<std::string> leftRunning;  ///< processes that outlive it: "sleep (process 4711)"
  bool isSilent;                         ///< it sent nothing at all
  std::string lastWords = {};            ///< why std::terminate ended it, "" otherwise

  bool HasExited(int status) const { return end == ChildEnd::kExited && code == status; }

  /// The last message. Nothing when there is none, or it is not understood.
  template <typename Message>
  std::optional<Message> Last() const {
    return lastMessage ? Decode<Message>(*lastMessage) : std::nullopt;
  }
};

/// Runs a child and waits at most for the limit; then it is killed. It belongs to the process group of
/// this process, so that it can use the terminal, and signals from there reach both. The child reads
/// nothing from standard input, and may print as much as it likes. Throws a `Refusal` when the child
/// cannot be started, `Interrupted` when this process is to end.
ChildResult RunChild(const ChildOrder& order);

/// How a child ended that did not finish: "crashed with signal 11 (Segmentation fault)", or "crashed with
/// signal 6 (Aborted; uncaught exception: no device)".
std::string DescribeEnd(const ChildResult& result, std::chrono::seconds limit);

/// In a child, first of all: it ends with its parent, a crash leaves no core file, and what is printed
/// before it is not lost. `channel` is the descriptor that the parent has named. Returns the request's
/// bytes; throws a `Refusal` when there is no parent.
std::string ReceiveRequest(int channel);

/// In a child: becomes one, and returns its request.
template <typename Request>
Request BecomeChild(int channel) {
  return nlohmann::json::from_cbor(ReceiveRequest(channel)).get<Request>();
}

/// In a child: sends one message.
template <typename Message>
void Send(const Message& message) {
  SendMessage(Encode(message));
}

#endif
