#ifndef TOOLS_RNGCTL_CHILD_H
#define TOOLS_RNGCTL_CHILD_H

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// Plug-in code may crash, exit or hang. So it runs in a process of its own: this program again, with
/// a hidden command, which sends what it finds piece by piece; what came before the end is kept.

enum class ChildEnd { kExited, kSignalled, kTimedOut };

struct ChildResult {
  std::vector<nlohmann::json> reports;  ///< all that were sent, in order
  ChildEnd end;
  int code;             ///< the exit status or the signal
  std::string printed;  ///< on standard output: what comes first, up to a few kilobytes
};

/// Whether a limit is for a child's whole life, or begins anew with each report.
enum class LimitOf { kLife, kSilence };

/// Runs this program with `arguments` and waits, at most for `limit`; then it and what it started in
/// its process group is killed. `libraryPath`, unless empty, is its LD_LIBRARY_PATH. It reads nothing
/// from standard input, and its standard output never waits: what does not fit is lost. Throws a
/// `Refusal` when it cannot be started.
ChildResult RunChild(const std::vector<std::string>& arguments, std::chrono::milliseconds limit,
                     const std::string& libraryPath = "", LimitOf limited = LimitOf::kLife);

/// How a child ended that has not come to its end: "crashed with signal 11 (Segmentation fault)".
std::string EndInWords(const ChildResult& result, std::chrono::seconds limit);

/// In a child, first of all: it ends with its parent, a crash leaves no core file, and what is printed
/// before it is not lost.
void BecomeChild();

/// In a child: sends one report.
void SendReport(const nlohmann::json& report);

#endif
