#include "tools/rngctl/settings/directory_lock.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLimit(5);
constexpr std::chrono::milliseconds kPause(5);

int LockWithin(std::chrono::seconds limit, int descriptor, int operation) {
  const Clock::time_point end = Clock::now() + limit;
  while (::flock(descriptor, operation | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return errno;
    if (Clock::now() >= end) return EWOULDBLOCK;
    std::this_thread::sleep_for(kPause);
  }
  return 0;
}

}  // namespace

DirectoryLock::DirectoryLock(const std::string& directory, Kind kind)
    : descriptor(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), error(errno) {
  if (descriptor < 0) return;
  error = LockWithin(kLimit, descriptor, kind == Kind::kShared ? LOCK_SH : LOCK_EX);
}

DirectoryLock::~DirectoryLock() {
  if (descriptor >= 0) ::close(descriptor);
}
