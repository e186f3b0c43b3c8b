// Preloaded: fchmodat fails, so the mode of a file cannot be changed by its path.

#include <cerrno>
#include <sys/stat.h>

extern "C" __attribute__((visibility("default"))) int fchmodat(int, const char*, mode_t,
                                                               int) noexcept {
  errno = EPERM;
  return -1;
}
