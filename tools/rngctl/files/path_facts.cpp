#include "tools/rngctl/files/path_facts.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostLinks = 40;  // the kernel's limit

PathFacts Look(const std::string& path, int flags) {
  struct statx found = {};
  PathFacts facts;
  if (::statx(AT_FDCWD, path.c_str(), flags | AT_NO_AUTOMOUNT, STATX_BASIC_STATS, &found) != 0) {
    facts.error = errno;
    return facts;
  }
  facts.mode = found.stx_mode;
  facts.owner = found.stx_uid;
  facts.group = found.stx_gid;
  facts.node = found.stx_ino;
  facts.names = found.stx_nlink;
  facts.size = found.stx_size;
  facts.blocks = found.stx_blocks;
  const auto attributes = found.stx_attributes & found.stx_attributes_mask;
  facts.isImmutable = (attributes & STATX_ATTR_IMMUTABLE) != 0;
  facts.isAppendOnly = (attributes & STATX_ATTR_APPEND) != 0;
  facts.isMountPoint = (attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  return facts;
}

}  // namespace

PathFacts LookAtEntry(const std::string& path) { return Look(path, AT_SYMLINK_NOFOLLOW); }

PathFacts LookThrough(const std::string& path) { return Look(path, 0); }

std::string KindOfFile(const PathFacts& facts) {
  switch (facts.mode & S_IFMT) {
    case S_IFDIR:
      return "a directory";
    case S_IFIFO:
      return "a named pipe (FIFO)";
    case S_IFSOCK:
      return "a socket";
    case S_IFLNK:
      return "a symbolic link";
    case S_IFREG:
      return "a file";
    default:
      return "a device";
  }
}

bool MayAccess(const std::string& path, int mode) {
  return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

std::string FindUnsearchable(const std::string& file) {
  fs::path path = fs::absolute(file);
  for (std::size_t i = 0; i < kMostLinks; ++i) {
    fs::path directory;
    for (const fs::path& part : path.parent_path()) {
      directory /= part;
      if (!MayAccess(directory, X_OK) && errno == EACCES) return directory;
    }
    std::error_code noLink;
    const fs::path target = fs::read_symlink(path, noLink);
    if (noLink) return "";
    path = path.parent_path() / target;
  }
  return "";
}

std::string DirectoryOf(const std::string& path) { return fs::path(path).parent_path(); }

std::vector<std::string> FollowLinks(const std::string& path) {
  std::vector<std::string> places;
  fs::path place(path);
  std::error_code unknown;
  while (places.size() < kMostLinks) {
    const fs::path directory = fs::weakly_canonical(place.parent_path(), unknown);
    if (!unknown) place = directory / place.filename();
    places.push_back(place);
    if (!LookAtEntry(place).IsLink()) return places;
    place = place.parent_path() / fs::read_symlink(place, unknown);
  }
  return {};
}

bool MayActAsOwner() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct data[2] = {};
  if (::syscall(SYS_capget, &header, data) != 0) return ::geteuid() == 0;
  return (data[0].effective & (1U << CAP_FOWNER)) != 0;
}
