// Preloaded: the process seems to have been started by a user other than the one whose rights it has.

#include <sys/syscall.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) uid_t getuid() noexcept {
  return static_cast<uid_t>(::syscall(SYS_getuid)) + 1;
}
