#ifndef HELPERS_SESSION_SESSION_H
#define HELPERS_SESSION_SESSION_H

#include "helpers/gathering/gathering.h"
#include "plugins/interactive/request.h"

#include <sys/types.h>

/// A helper's connection to the plug-in that started it.
class Session {
 public:
  /// Protects this process from core dumps and tracing, and waits for the request. Throws a
  /// `std::runtime_error` if no plug-in has started this process. When this process exits, the plug-in finds the
  /// end of the socket, even if a forked copy of the host has this end open, too.
  Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  const HelperRequest& Request() const { return request; }

  /// Descriptors that become readable when the draw is cancelled, and when the host exits.
  int Socket() const { return kHelperSocket; }
  int Host() const { return host; }

  /// Whether the draw has been cancelled or the host has exited.
  bool HasEnded() const;

  /// From now on, this process exits as soon as `HasEnded` becomes true, whatever it is doing. For programs that
  /// use a display, whose server may never answer: the server removes the window of a program that exits. Also
  /// for programs that send bytes, which nobody may be left to receive.
  void ExitAtEnd() const;

  /// Exits at once, without the work that libraries do at the end of a process.
  [[noreturn]] static void Exit(int status);

  /// Whether the host is stopped now, for example with Ctrl-Z.
  bool IsHostStopped() const;

  /// Sends the bytes of a draw. Returns false if the plug-in no longer wants them.
  bool Answer(HmacDrbg&& generator) const;

  /// Runs the self-test and sends its result.
  void AnswerSelfTest() const;

 private:
  HelperRequest request = {};
  pid_t process = 0;
  int host = -1;
};

/// From the system's generator. Throws a `std::runtime_error` if it fails. Also keeps the memory of this
/// process from being swapped, as far as the process is allowed to. Call it right before gathering.
SystemBytes DrawSystemBytes();

#endif
