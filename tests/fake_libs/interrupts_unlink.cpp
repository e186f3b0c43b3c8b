// Preloaded: interrupts the process group, as Ctrl-C does, right after a process has removed a file. To keep
// it from others, the program must be in a session of its own.

#include <csignal>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int unlink(const char* path) noexcept {
  const int result = static_cast<int>(::syscall(SYS_unlink, path));
  if (result == 0 && ::getsid(0) == ::getpgrp()) ::kill(0, SIGINT);
  return result;
}
