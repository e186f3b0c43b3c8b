// Preloaded: after a file is removed, cuts the one with the suffix ".tmp" beside it to RNG_TEST_SIZE bytes, as a
// disk without space does. The first RNG_TEST_FAILED_SYNCS calls of fsync fail, and so do the first
// RNG_TEST_FAILED_WRITES calls of write on a file. What stdio writes is not affected.

#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#define EXPORT extern "C" __attribute__((visibility("default")))

static int Number(const char* variable) {
  const char* const text = std::getenv(variable);
  return text ? std::atoi(text) : 0;
}

EXPORT int unlink(const char* path) noexcept {
  const int result = static_cast<int>(::syscall(SYS_unlink, path));
  const std::string copy = std::string(path) + ".tmp";
  const off_t size = Number("RNG_TEST_SIZE");
  struct stat status = {};
  if (result != 0 || ::stat(copy.c_str(), &status) != 0 || status.st_size <= size) return result;
  return ::truncate(copy.c_str(), size);
}

EXPORT int fsync(int descriptor) {
  static int left = Number("RNG_TEST_FAILED_SYNCS");
  if (left-- <= 0) return static_cast<int>(::syscall(SYS_fsync, descriptor));
  errno = EIO;
  return -1;
}

EXPORT ssize_t write(int descriptor, const void* bytes, size_t size) {
  static int left = Number("RNG_TEST_FAILED_WRITES");
  struct stat status = {};
  const bool isFile = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  if (!isFile || left-- <= 0) return ::syscall(SYS_write, descriptor, bytes, size);
  errno = ENOSPC;
  return -1;
}
