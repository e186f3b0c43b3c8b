#ifndef TOOLS_RNGCTL_FILES_PATH_FACTS_H
#define TOOLS_RNGCTL_FILES_PATH_FACTS_H

#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <vector>

/// What the system says about a path without opening it.
struct PathFacts {
  int error = 0;  ///< of looking: 0, or the errno
  mode_t mode = 0;
  uid_t owner = 0;
  gid_t group = 0;
  ino_t node = 0;
  std::uint32_t names = 0;  ///< hard links
  std::uint64_t size = 0;
  std::uint64_t blocks = 0;
  bool isImmutable = false;
  bool isAppendOnly = false;
  bool isMountPoint = false;

  bool Exists() const { return error == 0; }
  bool IsLink() const { return Exists() && S_ISLNK(mode); }
  bool IsDirectory() const { return Exists() && S_ISDIR(mode); }
  bool IsRegular() const { return Exists() && S_ISREG(mode); }
  bool IsFifo() const { return Exists() && S_ISFIFO(mode); }
  bool IsSocket() const { return Exists() && S_ISSOCK(mode); }
};

/// Of the entry itself, and of what it leads to.
PathFacts LookAtEntry(const std::string& path);
PathFacts LookThrough(const std::string& path);

/// Words for what it is: "a named pipe (FIFO)", "a directory".
std::string KindOfFile(const PathFacts& facts);

/// Whether the effective user may do that (R_OK, W_OK, X_OK); if not, errno says why.
bool MayAccess(const std::string& path, int mode);

/// The directory on the way to `file` that this user may not search, links included; "" for none.
std::string FindUnsearchable(const std::string& file);

/// The path without its last component.
std::string DirectoryOf(const std::string& path);

/// The path, then each path to which the links of its last component lead; the last one need not exist.
/// The directories are without links where they exist. Empty if the links lead in a circle.
std::vector<std::string> FollowLinks(const std::string& path);

/// Whether this process may act as the owner of files that are not its user's.
bool MayActAsOwner();

#endif
