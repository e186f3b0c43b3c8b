#ifndef TOOLS_RNGCTL_PROCESS_STATE_H
#define TOOLS_RNGCTL_PROCESS_STATE_H

#include <map>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

/// Process-wide state that a plug-in could change and that the host relies on. A plug-in should leave it
/// as it was. Threads, open files and memory are in resources.h.

/// Where something lies: the file of a library, "" for other memory, or `kUnmapped`.
using Place = std::string;
inline constexpr char kUnmapped[] = "memory that is no longer mapped";

struct SignalAction {
  void* handler;  ///< or SIG_DFL, SIG_IGN
  int flags;
  Place place;  ///< of the handler's code
};

struct EnvironmentEntry {
  std::string value;
  Place place;
};

struct ProcessSnapshot {
  std::map<int, SignalAction> actions;        ///< by signal
  std::set<int> blocked;                      ///< signals, for the calling thread
  std::map<std::string, std::string> values;  ///< with one value each: "the umask", "0022"
  std::set<std::string> timers;               ///< those that run
  std::map<std::string, EnvironmentEntry> environment;
  std::map<std::string, Place> buffers;                ///< of stdin, stdout, stderr
  std::map<std::string, std::string> standardStreams;  ///< what descriptors 0 to 2 refer to
  std::set<pid_t> children;
  /// False when the map of the memory cannot be read, for want of a descriptor: what lies where, and
  /// whether it can be read at all, is then unknown.
  bool isMemoryKnown = true;
};

/// The state now. Changes nothing; also reads what a closed library has left pointing into its memory.
ProcessSnapshot CaptureProcessState();

/// What someone did between the two, a sentence without subject each: "ignores SIGPIPE", "changes the
/// working directory to /tmp". Call it right after the capture of `after`, while its children live.
std::vector<std::string> Compare(const ProcessSnapshot& before, const ProcessSnapshot& after);

#endif
