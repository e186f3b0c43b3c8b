#include "plugins/interactive/start_orphan.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The host's signal handlers must not run in a copy of its process.
class AllSignalsBlocked {
 public:
  AllSignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
  }
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;
  ~AllSignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }

 private:
  sigset_t before;
};

// The functions below run in copies of the process: they only make system calls.

// Like fork, but the copy sends no signal when it exits.
pid_t CopyProcess() {
  return static_cast<pid_t>(::syscall(SYS_clone, 0UL, nullptr, nullptr, nullptr, 0UL));
}

void ResetSignals() {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) ::sigaction(number, &action, nullptr);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Without close_range, up to the hard limit: a host may have lowered the soft one below descriptors that are open.
void CloseFrom(unsigned first) {
  if (::syscall(SYS_close_range, first, ~0U, 0U) == 0) return;
  rlimit limit = {};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  for (rlim_t number = first; number < limit.rlim_max; ++number) ::close(static_cast<int>(number));
}

bool ArrangeDescriptors(int socket) {
  // The socket itself may be one of the descriptors that are replaced below.
  const int high = ::fcntl(socket, F_DUPFD, kOrphanSocket + 1);
  const int null = ::open("/dev/null", O_RDWR);
  if (high < 0 || null < 0) return false;
  for (int standard = 0; standard < kOrphanSocket; ++standard) {
    if (::dup2(null, standard) < 0) return false;
  }
  if (::dup2(high, kOrphanSocket) < 0) return false;
  CloseFrom(kOrphanSocket + 1);
  return true;
}

[[noreturn]] void BecomeProgram(const char* path, int socket, char* const* environment) {
  char* const arguments[] = {const_cast<char*>(path), nullptr};
  if (ArrangeDescriptors(socket) && ::chdir("/") == 0) {
    ResetSignals();
    ::execve(path, arguments, environment);
  }
  ::_exit(127);
}

// A process in between starts the program and exits at once, so the program becomes a child of init or of the
// nearest subreaper.
bool StartWithoutParent(const char* path, int socket, char* const* environment) {
  const AllSignalsBlocked blocked;
  const pid_t between = CopyProcess();
  if (between == 0) {
    const pid_t program = CopyProcess();
    if (program == 0) BecomeProgram(path, socket, environment);
    ::_exit(program > 0 ? 0 : 1);
  }
  if (between < 0) return false;
  int status = 0;
  // The host may have reaped it first. Then the socket shows whether the program runs.
  while (::waitpid(between, &status, static_cast<int>(__WCLONE)) < 0) {
    if (errno != EINTR) return true;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// After unshare(CLONE_NEWPID), the process in between would be the first one of the new namespace. When it exits, the
// host could create no more processes. The kernel reports no namespace for children as long as it has no process.
bool AreChildrenInThisNamespace() {
  struct stat own = {};
  struct stat ofChildren = {};
  if (::stat("/proc/self/ns/pid", &own) != 0) return true;  // not known
  return ::stat("/proc/self/ns/pid_for_children", &ofChildren) == 0 &&
         own.st_ino == ofChildren.st_ino;
}

}  // namespace

int StartOrphan(const char* path, char* const* environment) {
  if (!AreChildrenInThisNamespace()) {
    errno = EPERM;
    return -1;
  }
  int sockets[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) return -1;
  const bool isStarted = StartWithoutParent(path, sockets[1], environment);
  ::close(sockets[1]);
  if (isStarted) return sockets[0];
  ::close(sockets[0]);
  return -1;
}
