#ifndef TOOLS_RNGCTL_SETTINGS_DIRECTORY_LOCK_H
#define TOOLS_RNGCTL_SETTINGS_DIRECTORY_LOCK_H

#include <string>

/// Locks a directory against other processes of rngctl while it lives, without a file of its own. The
/// library takes no such lock, so other programs do not wait for it.
class DirectoryLock {
 public:
  enum class Kind { kShared, kExclusive };

  /// Waits for other processes, but at most five seconds.
  DirectoryLock(const std::string& directory, Kind kind);
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;
  ~DirectoryLock();

  /// 0 if it is locked, EWOULDBLOCK if another process kept the lock, or another errno.
  int Error() const { return error; }

 private:
  const int descriptor;
  int error;
};

#endif
