#ifndef OPENSSL_MODULE_HELPER_PROCESS_H
#define OPENSSL_MODULE_HELPER_PROCESS_H

#include "openssl/module/deadline.h"
#include "openssl/request.h"

#include <sys/types.h>

/// Stores the reason of a failure. Returns false, so that a function can return with it.
bool Fail(DrawText& text, const char* reason);

/// This process's socket, with its identity in the kernel: the host may close the descriptor at any time, and open
/// another file that gets the same number. All zeros: none has been opened.
struct Socket {
  int descriptor;
  dev_t device;
  ino_t inode;

  bool WasOpened() const { return inode != 0; }
  bool IsStillThis() const;
};

/// The helper process that draws for this process. It exits when this process does, or when the socket is closed. All
/// zeros: not started. The owner calls `Stop`; a destructor would also stop the parent's helper in a child process.
///
/// Threads: one at a time.
struct HelperProcess {
  Socket socket;
  std::uint32_t requests;

  /// False if it was never started, has terminated, or the host has closed the socket.
  bool IsRunning() const;

  /// Returns false, with the reason in `text`, if it cannot be started. May return true even if it terminates at once.
  bool Start(DrawText& text);

  void Stop() const;

  /// Sends a request and receives the answer. `kDrawn` comes with `size` bytes in `buffer`, and the generator in
  /// `text`. Otherwise `text` says why not, and the helper is stopped. After `kRefused` the owner must not ask again: a
  /// new helper would not know about the alarm.
  DrawAnswer::Result Ask(const ProviderParameters& choice, void* buffer, std::size_t size,
                         const Deadline& deadline, DrawText& text);

 private:
  DrawAnswer::Result Exchange(const ProviderParameters& choice, void* buffer, std::size_t size,
                              const Deadline& deadline, DrawText& text);
};

#endif
