// Preloaded: /dev/hwrng is the file that RNG_TEST_HWRNG names. There is none without the variable, and none that
// this user may read if it is "refused". The kernel calls its source "tested".

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

int Fail(int error) {
  errno = error;
  return -1;
}

int OpenSource() {
  const int file = ::memfd_create("rng_current", MFD_CLOEXEC);
  if (::write(file, "tested\n", 7) != 7 || ::lseek(file, 0, SEEK_SET) != 0) return Fail(EIO);
  return file;
}

int OpenDevice(int flags) {
  const char* const path = std::getenv("RNG_TEST_HWRNG");
  if (!path) return Fail(ENOENT);
  if (std::strcmp(path, "refused") == 0) return Fail(EACCES);
  return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags));
}

}  // namespace

// By another name, because the system's header may define the function inline.
extern "C" __attribute__((visibility("default"))) int OpenInstead(const char* path, int flags,
                                                                  ...) __asm__("open");

int OpenInstead(const char* path, int flags, ...) {
  if (std::strcmp(path, "/dev/hwrng") == 0) return OpenDevice(flags);
  if (std::strcmp(path, "/sys/class/misc/hw_random/rng_current") == 0) return OpenSource();
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}
