#ifndef OPENSSL_MODULE_CONNECTION_H
#define OPENSSL_MODULE_CONNECTION_H

#include "openssl/module/helper_process.h"

#include <cstddef>

/// Draws through a helper process, which exits when this process does. The plug-ins must not run in this process: they
/// may use OpenSSL themselves, and OpenSSL may hold its locks during a draw.
///
/// The first draw starts the helper. After a fork, the child process starts its own, and waits for no lock that a
/// thread of the parent held. If the helper terminates during a draw, that draw fails and the next one starts another
/// helper. So does a draw after this process has closed all its descriptors, as daemons do.
///
/// Uses nothing of the C++ library, so that the module does not load it into a process that does not have it.
///
/// Threads: any; one draw at a time, the others wait.
class Connection {
 public:
  /// Does not fail. If there is no memory for the state, every draw fails.
  Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  /// Fills `size` bytes, at most `kLargestDraw`, from the generator that `choice` names. Returns false if that fails,
  /// and `reason` then says why: the caller must not use what is in the buffer. Takes about a minute at most. `choice`
  /// must be the same in each call.
  bool Draw(const ProviderParameters& choice, void* buffer, std::size_t size, DrawText& reason);

  /// The generator of the last draw of this process, such as "Rutoken 3A7F". Empty if no draw has succeeded.
  DrawText LastGenerator();

 private:
  struct State;

  bool DrawLocked(const ProviderParameters& choice, void* buffer, std::size_t size,
                  const Deadline& deadline, DrawText& reason);
  void CloseInherited();

  State* state = nullptr;  // the kernel zeroes it in a child process after a fork
  bool isAlarmed = false;  // in child processes, too, after a fork
  DrawText alarm = {};
  Socket opened = {};  // the last that was opened, by this process or by its parent before the fork
};

#endif
