#include "plugins/unixdev/open_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

OpenFile::OpenFile(const char* path)
    : descriptor(::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)),
      error(descriptor < 0 ? errno : 0) {}

OpenFile::~OpenFile() {
  if (descriptor >= 0) ::close(descriptor);
}

bool OpenFile::IsCharacterDevice() const {
  struct stat status = {};
  return ::fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode);
}

bool OpenFile::IsCharacterDevice(unsigned major, unsigned minor) const {
  struct stat status = {};
  return ::fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode) &&
         status.st_rdev == ::makedev(major, minor);
}

ssize_t OpenFile::Read(void* buffer, std::size_t size) const {
  return ::read(descriptor, buffer, size);
}
