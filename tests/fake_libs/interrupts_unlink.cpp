// Preloaded: interrupts the process, as Ctrl-C does, right after it has removed a file.

#include <csignal>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int unlink(const char* path) noexcept {
  const int result = static_cast<int>(::syscall(SYS_unlink, path));
  if (result == 0) ::kill(::getpid(), SIGINT);
  return result;
}
