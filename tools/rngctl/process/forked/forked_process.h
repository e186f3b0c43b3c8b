#ifndef TOOLS_RNGCTL_PROCESS_FORKED_FORKED_PROCESS_H
#define TOOLS_RNGCTL_PROCESS_FORKED_FORKED_PROCESS_H

#include "tools/rngctl/process/descriptor.h"
#include "tools/rngctl/process/forked/secret_bytes.h"
#include "tools/rngctl/process/interruption.h"
#include "tools/rngctl/process/terminal_settings.h"

#include <chrono>
#include <functional>
#include <string>
#include <sys/types.h>

/// The most that is passed at once; a multiple of three, for base64.
constexpr std::size_t kLargestPiece = 3UL * 16384;

using TakePiece = std::function<void(const SecretBytes& piece)>;

/// How long the next piece may take. Asked again after each piece.
using GetLimit = std::function<std::chrono::seconds()>;

/// Whose code runs in a process besides our own. If the process ends badly, the message names them, and adds
/// the advice.
struct Suspects {
  const char* who;
  const char* advice;
};
inline constexpr Suspects kPlugins = {"A plug-in", "Run \"rngctl doctor\" to find out which."};
inline constexpr Suspects kService = {"The known-path service",
                                      "Run \"rngctl doctor\" to find out which file it is."};
inline constexpr Suspects kPluginsAndService = {"A plug-in or the known-path service",
                                                kPlugins.advice};

/// Runs the code of others in a forked process. Code that terminates that process can neither change what this
/// one writes nor make an incomplete result look complete. Standard output of the forked process is standard
/// error, so what a plug-in prints does not get into the result.
class ForkedProcess {
 public:
  /// `work` runs in the new process, and passes on its result. If it throws, so does `ForEachPiece`.
  using Work = std::function<void(const TakePiece& pass)>;
  ForkedProcess(const Suspects& whoRuns, const Work& work);
  ForkedProcess(const ForkedProcess&) = delete;
  ForkedProcess& operator=(const ForkedProcess&) = delete;

  /// Ends the process if it still runs: closes the channel, and kills it if it continues for a second.
  ~ForkedProcess();

  /// Returns when `work` has returned and the process has exited with status 0. Throws a `Refusal` if it
  /// ended in any other way, or was silent for longer than the limit, if there is one; and `Interrupted` if a
  /// signal asks this process to terminate.
  void ForEachPiece(const TakePiece& take, const GetLimit& limit = nullptr);

 private:
  bool HasEnded();
  void WaitForEnd();
  bool WaitForMessage(const GetLimit& limit);
  SecretBytes ReceiveMessage();
  void Conclude(const SecretBytes& message, const GetLimit& limit);
  [[noreturn]] void RefuseSilence(std::chrono::seconds limit) const;
  [[noreturn]] void RefuseBadEnd() const;

  const Suspects suspects;
  const TerminalSettings terminal;  // destroyed last, because a killed plug-in cannot restore them
  Descriptor messages;
  pid_t process = -1;
  int status = 0;  // valid when process is -1
};

/// Passes a text of any size on.
void PassText(const TakePiece& pass, const std::string& text);

/// Runs `work` in such a process and returns its result. Until then, signals that ask this process to
/// terminate throw `Interrupted`.
std::string AnswerOfFork(const Suspects& whoRuns, const std::function<std::string()>& work);

#endif
