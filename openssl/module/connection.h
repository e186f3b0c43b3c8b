#ifndef OPENSSL_MODULE_CONNECTION_H
#define OPENSSL_MODULE_CONNECTION_H

#include "openssl/module/drawing_program.h"

#include <cstddef>

/// Draws in a program of this project, which runs beside this process and ends with it. The plug-ins must not run in
/// this process: they may use OpenSSL themselves, and a draw can happen while OpenSSL holds its locks.
///
/// The first draw starts the program. A forked copy of this process starts its own, and waits for no lock that
/// a thread of the original held. If the program is lost during a draw, that draw fails and the next one starts the
/// program again, as does a draw after this process has closed all descriptors, which daemons do.
///
/// Uses nothing of the C++ library, so the module brings none into a process that has none.
///
/// Threads: any; draws wait for each other.
class Connection {
 public:
  /// Cannot fail. Without memory for the object's state, every draw fails.
  Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  /// Fills `size` bytes, at most `kLargestDraw`. Returns true when they are random and come from the generator of
  /// `choice`. Otherwise the buffer holds zeros, and `reason` says why. Takes about a
  /// minute at most. `choice` must be the same at each call.
  bool Draw(const ProviderParameters& choice, void* buffer, std::size_t size, DrawText& reason);

  /// The generator of the last draw of this process, such as "Rutoken 3A7F". Empty if no draw has succeeded.
  DrawText LastGenerator();

 private:
  struct State;

  bool DrawLocked(const ProviderParameters& choice, void* buffer, std::size_t size,
                  const Deadline& deadline, DrawText& reason);
  void CloseInherited();

  State* state = nullptr;  // in memory that the kernel clears in a forked copy
  Socket opened = {};  // the last that was opened, in this process or in the original of this copy
};

#endif
