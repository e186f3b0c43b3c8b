#ifndef TOOLS_RNGCTL_DOCTOR_PERMISSIONS_RIGHTS_H
#define TOOLS_RNGCTL_DOCTOR_PERMISSIONS_RIGHTS_H

#include "tools/rngctl/files/users.h"

#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <vector>

/// An entry of a POSIX access control list, as the kernel stores it.
struct AclEntry {
  enum Tag : std::uint16_t { kUser = 2, kOwningGroup = 4, kGroup = 8, kMask = 16 };
  std::uint16_t tag;
  std::uint16_t permissions;  ///< as in a mode: 2 is to write, 1 to search
  std::uint32_t id;           ///< of the user or group
};

/// Empty for bytes that are no such list.
std::vector<AclEntry> ParseAcl(const std::string& bytes);

/// What the system says about an entry of a directory. A link is not followed.
struct Rights {
  int error = 0;  ///< of looking: 0, or the errno
  mode_t mode = 0;
  uid_t owner = 0;
  gid_t group = 0;
  nlink_t names = 1;
  std::vector<AclEntry> acl = {};  ///< empty: the mode says all

  bool Exists() const { return error == 0; }
  bool IsLink() const { return S_ISLNK(mode); }
  bool IsDirectory() const { return S_ISDIR(mode); }
  bool IsRegular() const { return S_ISREG(mode); }
  /// Whether only the owner of an entry, or of the directory, can replace the entry.
  bool IsSticky() const { return (mode & S_ISVTX) != 0; }
};

Rights ReadRights(const std::string& path);

/// Somebody who is not trusted and can write.
struct Writer {
  std::string who;  ///< "everyone"
  std::string fix;  ///< the command that prevents it
  bool isOwner = false;
};

/// Who can write to a file, or create and replace entries of a directory. `path` is only for the fixes.
/// Of a link, nobody can.
std::vector<Writer> FindWriters(const std::string& path, const Rights& rights, const Users& users);

#endif
