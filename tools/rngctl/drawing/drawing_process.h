#ifndef TOOLS_RNGCTL_DRAWING_DRAWING_PROCESS_H
#define TOOLS_RNGCTL_DRAWING_DRAWING_PROCESS_H

#include "tools/rngctl/drawing/secret_bytes.h"
#include "tools/rngctl/process/descriptor.h"
#include "tools/rngctl/process/interruption.h"
#include "tools/rngctl/process/terminal_settings.h"

#include <functional>
#include <string>
#include <sys/types.h>

/// The most that is drawn at once; a multiple of three, for base64.
constexpr std::size_t kLargestPiece = 3UL * 16384;

using TakePiece = std::function<void(const SecretBytes& piece)>;

/// Draws in a forked process. A plug-in that terminates it can neither change the file that this process
/// writes nor make it look complete. Standard output there is standard error, so what a plug-in prints
/// does not get among the bytes.
class DrawingProcess {
 public:
  /// `draw` runs in the new process, and passes on what it draws. If it throws, so does `ForEachPiece`.
  using Draw = std::function<void(const TakePiece& pass)>;
  explicit DrawingProcess(const Draw& draw);
  DrawingProcess(const DrawingProcess&) = delete;
  DrawingProcess& operator=(const DrawingProcess&) = delete;

  /// Ends the process if it still runs: closes the channel, and kills it if it continues for a second.
  ~DrawingProcess();

  /// Returns when `draw` has returned and the process has exited with status 0. Throws a `Refusal` if it
  /// ended in any other way, and `Interrupted` if a signal asks this process to terminate.
  void ForEachPiece(const TakePiece& take);

 private:
  bool HasEnded();
  void WaitForEnd();
  bool WaitForMessage();
  SecretBytes ReceiveMessage();
  void Conclude(const SecretBytes& message);
  [[noreturn]] void RefuseBadEnd() const;

  const TerminalSettings terminal;  // destroyed last, because a killed plug-in cannot restore them
  Descriptor messages;
  pid_t process = -1;
  int status = 0;  // valid when process is -1
};

#endif
