#include "helpers/tty/terminal/guard.h"

#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int kLock = STDERR_FILENO + 1;

// Blocks all signals, also SIGTTOU, which would stop the guard: it is not in the foreground.
[[noreturn]] void Watch(int pipe, int terminal, int socket, int lock) {
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, nullptr);
  ::dup2(pipe, STDIN_FILENO);
  ::dup2(terminal, STDOUT_FILENO);
  ::dup2(socket, STDERR_FILENO);
  if (::dup2(lock, kLock) < 0) ::close(kLock);
  ::syscall(SYS_close_range, kLock + 1, ~0U, 0);
  TakenSettings settings = {};
  while (::read(STDIN_FILENO, &settings, sizeof settings) > 0) continue;
  RestoreSettings(STDOUT_FILENO, settings);
  ::shutdown(STDERR_FILENO, SHUT_RDWR);
  ::_exit(0);
}

}  // namespace

Guard::Guard(int terminal, int socket, int lock) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("There are too many open files.");
  const pid_t process = ::fork();
  if (process == 0) {
    ::close(ends[1]);
    Watch(ends[0], terminal, socket, lock);
  }
  ::setpgid(process, process);  // so that killing the front end's group spares the guard
  ::close(ends[0]);
  pipe = ends[1];
  if (process < 0) throw std::runtime_error("There are too many processes.");
}

Guard::~Guard() { ::close(pipe); }

// Shorter than PIPE_BUF, so it is written as a whole.
bool Guard::Tell(const TakenSettings& settings) const {
  return ::write(pipe, &settings, sizeof settings) == sizeof settings;
}
