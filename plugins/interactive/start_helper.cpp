#include "plugins/interactive/start_helper.h"

#include "plugins/interactive/request.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The variables that the helper gets. None of them names a library or module to load.
constexpr const char* kKept[] = {
    "TERM", "DISPLAY", "XAUTHORITY", "HOME",
    // The user's language.
    "LANG", "LANGUAGE", "LC_ALL", "LC_CTYPE", "LC_MESSAGES",
    // They show whether the user is connected over a network.
    "SSH_TTY", "SSH_CLIENT", "SSH_CONNECTION", "TMUX", "STY",
    // The desktop whose style the dialog takes, and the bus that screen readers use.
    "XDG_CURRENT_DESKTOP", "KDE_SESSION_VERSION", "XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS"};
constexpr std::size_t kMostVariables = sizeof kKept / sizeof *kKept;

// "NAME=value" for each kept variable that is set. Built before the process is copied, because memory cannot
// be allocated in the copy of a process with threads.
class Environment {
 public:
  Environment() {
    for (const char* const name : kKept) {
      const char* const value = std::getenv(name);
      const std::size_t size = value ? std::strlen(name) + std::strlen(value) + 2 : 0;
      char* const entry = size ? static_cast<char*>(std::malloc(size)) : nullptr;
      if (!entry) continue;
      std::snprintf(entry, size, "%s=%s", name, value);
      entries[count++] = entry;
    }
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() {
    for (std::size_t i = 0; i < count; ++i) std::free(entries[i]);
  }
  char* const* Get() const { return entries; }

 private:
  char* entries[kMostVariables + 1] = {};
  std::size_t count = 0;
};

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

void CloseFrom(unsigned first) {
  if (::syscall(SYS_close_range, first, ~0U, 0U) == 0) return;
  rlimit limit = {};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  for (rlim_t number = first; number < limit.rlim_cur; ++number) ::close(static_cast<int>(number));
}

bool ArrangeDescriptors(int socket) {
  // The socket itself may be one of the descriptors that are replaced below.
  const int high = ::fcntl(socket, F_DUPFD, kHelperSocket + 1);
  const int null = ::open("/dev/null", O_RDWR);
  if (high < 0 || null < 0) return false;
  for (int standard = 0; standard < kHelperSocket; ++standard) {
    if (::dup2(null, standard) < 0) return false;
  }
  if (::dup2(high, kHelperSocket) < 0) return false;
  CloseFrom(kHelperSocket + 1);
  return true;
}

[[noreturn]] void BecomeHelper(const char* path, int socket, char* const* environment) {
  char* const arguments[] = {const_cast<char*>(path), nullptr};
  if (ArrangeDescriptors(socket) && ::chdir("/") == 0) {
    ResetSignals();
    ::execve(path, arguments, environment);
  }
  ::_exit(127);
}

// A process in between starts the helper and exits at once, so the helper becomes a child of init or of the
// nearest subreaper.
bool StartOrphan(const char* path, int socket, char* const* environment) {
  const AllSignalsBlocked blocked;
  const pid_t between = CopyProcess();
  if (between == 0) {
    const pid_t helper = CopyProcess();
    if (helper == 0) BecomeHelper(path, socket, environment);
    ::_exit(helper > 0 ? 0 : 1);
  }
  if (between < 0) return false;
  int status = 0;
  // The host may have reaped it first. Then the socket shows whether the helper runs.
  while (::waitpid(between, &status, static_cast<int>(__WCLONE)) < 0) {
    if (errno != EINTR) return true;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int StartHelper(const char* path) {
  const Environment environment;
  int sockets[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) return -1;
  const bool isStarted = StartOrphan(path, sockets[1], environment.Get());
  ::close(sockets[1]);
  if (isStarted) return sockets[0];
  ::close(sockets[0]);
  return -1;
}
