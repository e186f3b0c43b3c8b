// Preloaded: each wait for a process is interrupted once, as by a signal.

#include <cerrno>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) pid_t waitpid(pid_t process, int* status,
                                                                int options) {
  static bool isInterrupted = false;
  isInterrupted = options == 0 && !isInterrupted;
  if (!isInterrupted) {
    return static_cast<pid_t>(::syscall(SYS_wait4, process, status, options, nullptr));
  }
  errno = EINTR;
  return -1;
}
