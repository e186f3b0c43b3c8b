#ifndef OPENSSL_MODULE_DRAWING_PROGRAM_H
#define OPENSSL_MODULE_DRAWING_PROGRAM_H

#include "openssl/module/deadline.h"
#include "openssl/request.h"

#include <sys/types.h>

/// This end of the pair of sockets, as the kernel identifies it: the host may close the descriptor at any time, and
/// open another file in its place. All zero: none.
struct Socket {
  bool isOpen;
  int descriptor;
  dev_t device;
  ino_t inode;

  bool IsStillThis() const;
};

/// The program that draws for this process. It ends when this process ends, and when its socket is closed. All zero: not
/// started. The owner calls `Stop`, because the destructor of a forked copy must leave the original's alone.
///
/// Threads: one at a time.
struct DrawingProgram {
  Socket socket;
  std::uint32_t requests;

  /// Whether it can be asked. False also when it has terminated, or when the host has closed the socket.
  bool IsRunning() const;

  /// Returns false, with the reason in `text`, if it cannot be started. May return true if it terminates at once.
  bool Start(DrawText& text);

  void Stop();

  /// Sends a request and receives the answer. Returns true with `size` bytes in `buffer`, and the generator in `text`.
  /// Otherwise `text` says why not. Then the program is stopped, unless it keeps refusing draws after an alarm: a new
  /// one would not know of the alarm.
  bool Ask(const ProviderParameters& choice, void* buffer, std::size_t size,
           const Deadline& deadline, DrawText& text);

 private:
  DrawAnswer::Result Converse(const ProviderParameters& choice, void* buffer, std::size_t size,
                              const Deadline& deadline, DrawText& text);
};

#endif
