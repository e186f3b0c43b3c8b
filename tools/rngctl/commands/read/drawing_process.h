#ifndef TOOLS_RNGCTL_COMMANDS_READ_DRAWING_PROCESS_H
#define TOOLS_RNGCTL_COMMANDS_READ_DRAWING_PROCESS_H

#include "tools/rngctl/commands/read/secret_bytes.h"
#include "tools/rngctl/process/descriptor.h"
#include "tools/rngctl/process/interruption.h"
#include "tools/rngctl/process/terminal_settings.h"

#include <functional>
#include <string>
#include <sys/types.h>

using TakePiece = std::function<void(const SecretBytes& piece)>;

/// Draws in a forked process: plug-in code may end it, and can neither touch the file that this one
/// writes nor make it look complete. There, standard output is standard error, so what a plug-in prints
/// is not among the bytes.
class DrawingProcess {
 public:
  /// `draw` runs in the new process, and passes on what it draws. If it throws, so does `ForEachPiece`.
  using Draw = std::function<void(const TakePiece& pass)>;
  explicit DrawingProcess(const Draw& draw);
  DrawingProcess(const DrawingProcess&) = delete;
  DrawingProcess& operator=(const DrawingProcess&) = delete;

  /// Ends the process if it still runs, first by no longer listening.
  ~DrawingProcess();

  /// Returns when `draw` has returned and the process has exited with success. Throws a `Refusal` when
  /// something else ended it, `Interrupted` when this process is to end.
  void ForEachPiece(const TakePiece& take);

 private:
  bool HasEnded();
  void WaitForEnd();
  bool WaitForMessage();
  SecretBytes ReceiveMessage();
  void Conclude(const SecretBytes& message);
  [[noreturn]] void RefuseBadEnd() const;

  const TerminalSettings terminal;  // destroyed last: a plug-in that is killed cannot restore them
  Descriptor messages;
  pid_t process = -1;
  int status = 0;  // valid when process is -1
};

#endif
