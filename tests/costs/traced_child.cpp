#include "tests/costs/traced_child.h"

#include "tests/costs/cost_host.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/ptrace.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kCallStop = SIGTRAP | 0x80;  // as PTRACE_O_TRACESYSGOOD has it

void Check(long result) {
  if (result == -1) throw std::runtime_error(std::string("tracing: ") + std::strerror(errno));
}

[[noreturn]] void BecomeTraced(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
  if (::ptrace(PTRACE_TRACEME, 0, 0, 0) == 0) ::execv(arguments[0], arguments.data());
  ::_exit(127);
}

bool IsMarker(const user_regs_struct& registers) {
  return static_cast<long>(registers.orig_rax) == kMarkerCall && registers.rdi == kMarkerArgument;
}

// Lets the child run to its next stop and returns how it stopped.
int Resume(pid_t child, int signal) {
  int status = 0;
  Check(::ptrace(PTRACE_SYSCALL, child, 0, signal));
  Check(::waitpid(child, &status, 0));
  return status;
}

}  // namespace

std::vector<long> TraceMarkedCalls(const std::vector<std::string>& command) {
  const pid_t child = ::fork();
  Check(child);
  if (child == 0) BecomeTraced(command);

  int status = 0;
  Check(::waitpid(child, &status, 0));
  if (!WIFSTOPPED(status)) throw std::runtime_error("tracing: the child could not be traced");
  Check(::ptrace(PTRACE_SETOPTIONS, child, 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL));

  std::vector<long> calls;
  int markers = 0;
  bool isEntering = true;  // every call stops the child twice
  for (status = Resume(child, 0); WIFSTOPPED(status);) {
    const bool isCall = WSTOPSIG(status) == kCallStop;
    if (isCall && isEntering) {
      user_regs_struct registers{};
      Check(::ptrace(PTRACE_GETREGS, child, 0, &registers));
      if (IsMarker(registers)) {
        ++markers;
      } else if (markers == 1) {
        calls.push_back(static_cast<long>(registers.orig_rax));
      }
    }
    if (isCall) isEntering = !isEntering;
    status = Resume(child, isCall ? 0 : WSTOPSIG(status));
  }
  if (status != 0 || markers != 2) throw std::runtime_error("tracing: the child did not end well");
  return calls;
}
