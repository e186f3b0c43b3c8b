// Preloaded: signals the process right after it has renamed a file.

#include <csignal>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int renameat(int from, const char* oldName,
                                                               int to,
                                                               const char* newName) noexcept {
  const int result = static_cast<int>(::syscall(SYS_renameat, from, oldName, to, newName));
  if (result == 0) ::raise(SIGUSR1);
  return result;
}
