#include "tools/rngctl/settings/storing.h"

#include "tools/rngctl/files/path_facts.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <unistd.h>

// Each function returns why something fails, "" if it succeeds.

namespace {

constexpr std::uint64_t kBlockSize = 512;  // of those that statx counts, on any file system

std::string WhyNotAccessible(const std::string& path, int mode) {
  if (MayAccess(path, mode)) return "";
  const char* const who = errno == EACCES ? " by this user" : "";
  return path + " cannot be written" + who + " (" + std::strerror(errno) + ")";
}

std::string WhyNotReachable(const std::string& path, const PathFacts& through) {
  const bool isLink = LookAtEntry(path).IsLink();
  if (isLink && through.error == ELOOP)
    return path + " is a symbolic link that leads back to itself";
  if (isLink && through.error == ENOENT) return path + " is a dangling symbolic link";
  return path + " cannot be reached (" + std::strerror(through.error) + ")";
}

std::string WhyNotCreatable(const std::string& directory, std::uint64_t bytes) {
  const PathFacts place = LookThrough(directory);
  if (!place.Exists()) return WhyNotReachable(directory, place);
  if (!place.IsDirectory()) return directory + " is not a directory";
  const std::string refusal = WhyNotAccessible(directory, W_OK | X_OK);
  return refusal.empty() ? WhyNoSpace(directory, bytes) : refusal;
}

// With O_CREAT, the kernel may refuse to open another user's file in a sticky directory such as /tmp,
// even for root.
std::string WhyProtected(const std::string& path, const PathFacts& file) {
  const PathFacts place = LookThrough(DirectoryOf(path));
  const bool isShared = (place.mode & S_ISVTX) != 0 && (place.mode & (S_IWOTH | S_IWGRP)) != 0;
  if (!isShared || file.owner == place.owner || file.owner == ::geteuid()) return "";
  int level = 0;
  std::ifstream("/proc/sys/fs/protected_regular") >> level;
  if (level < ((place.mode & S_IWOTH) != 0 ? 1 : 2)) return "";
  return path + " belongs to another user in a sticky directory";
}

// Where the links of the path lead, as far as the kernel can follow them.
std::string TargetOf(const std::string& path) {
  const std::vector<std::string> places = FollowLinks(path);
  return places.empty() ? path : places.back();
}

bool LeadsTo(const std::string& link, const std::string& entry) {
  const std::vector<std::string> places = FollowLinks(link);
  const std::vector<std::string> entries = FollowLinks(entry);
  return !entries.empty() && std::find(places.begin(), places.end(), entries[0]) != places.end();
}

// Opening for writing, which truncates the file.
std::string WhyNotOverwritable(const std::string& path, const PathFacts& file,
                               std::uint64_t bytes) {
  if (!file.IsRegular()) return path + " is " + KindOfFile(file);
  if (file.isImmutable) return path + " is immutable";
  if (file.isAppendOnly) return path + " is append-only";
  const std::string refusal = WhyNotAccessible(path, W_OK);
  if (!refusal.empty()) return refusal;
  const std::string target = TargetOf(path);
  const std::string protection = WhyProtected(target, file);
  if (!protection.empty()) return protection;
  const std::uint64_t freed = file.blocks * kBlockSize;
  return freed >= bytes ? "" : WhyNoSpace(DirectoryOf(target), bytes - freed);
}

// Opening for writing, which creates the file, or what a link to it leads to.
std::string WhyNotWritable(const std::string& path, std::uint64_t bytes) {
  const PathFacts file = LookThrough(path);
  if (file.Exists()) return WhyNotOverwritable(path, file, bytes);
  if (file.error != ENOENT) return WhyNotReachable(path, file);
  const std::string target = TargetOf(path);
  const std::string refusal = WhyNotCreatable(DirectoryOf(target), bytes);
  if (refusal.empty() || !LookAtEntry(path).IsLink()) return refusal;
  return path + " leads to " + target + ", which cannot be created: " + refusal;
}

// Removing or renaming an entry of the directory.
std::string WhyNotRemovable(const std::string& path) {
  const PathFacts entry = LookAtEntry(path);
  if (!entry.Exists()) return "";
  if (entry.IsDirectory()) return path + " is a directory";
  if (entry.isImmutable) return path + " is immutable";
  if (entry.isAppendOnly) return path + " is append-only";
  if (entry.isMountPoint) return path + " is a mount point";
  const PathFacts place = LookThrough(DirectoryOf(path));
  const uid_t user = ::geteuid();
  const bool isProtected = (place.mode & S_ISVTX) != 0 && !MayActAsOwner();
  if (isProtected && user != place.owner && user != entry.owner) {
    return path + " belongs to another user in a sticky directory";
  }
  return "";
}

std::string WhyNotReplaceable(const std::string& file, std::uint64_t bytes) {
  const std::string directory = DirectoryOf(file);
  const std::string temporary = file + ".tmp";
  if (LookThrough(directory).isAppendOnly) return directory + " is append-only";
  std::string refusal = WhyNotAccessible(directory, W_OK | X_OK);
  if (refusal.empty()) refusal = WhyNotRemovable(file);
  if (refusal.empty()) refusal = WhyNotWritable(temporary, bytes);
  if (refusal.empty()) refusal = WhyNotRemovable(temporary);
  if (refusal.empty() && LeadsTo(temporary, file)) {
    refusal = temporary + " is a symbolic link to " + file;  // which is removed first
  }
  return refusal;
}

// The nearest existing entry above the file: the missing directories are created in it. If it is not
// a directory, they cannot be. Of a relative path, nothing may exist at all.
std::string NearestDirectory(const std::string& file) {
  std::string directory = DirectoryOf(file);
  while (LookAtEntry(directory).error == ENOENT && directory != DirectoryOf(directory)) {
    directory = DirectoryOf(directory);
  }
  return directory;
}

// Opening a socket fails.
bool CanBeRead(const std::string& file, const PathFacts& through) {
  return through.Exists() && !through.IsSocket() && MayAccess(file, R_OK);
}

// SIGXFSZ ends the process before it has removed the old file. If that signal is ignored, the copy is cut
// and replaces the file anyway.
std::string WhyTooLarge(std::uint64_t bytes) {
  rlimit limit = {};
  if (::getrlimit(RLIMIT_FSIZE, &limit) != 0 || bytes <= limit.rlim_cur) return "";
  return "this process may write no file of more than " + std::to_string(limit.rlim_cur) +
         " bytes (ulimit -f)";
}

}  // namespace

std::string WhyNotStorable(const std::string& file) {
  if (!file.starts_with('/')) return "its directory is not an absolute path";
  const PathFacts through = LookThrough(file);
  if (through.IsFifo()) return file + " is a named pipe (FIFO)";
  const std::uint64_t bytes = through.size + kMostAdded;
  const std::string limit = WhyTooLarge(bytes);
  if (!limit.empty()) return limit;
  if (CanBeRead(file, through)) return WhyNotReplaceable(file, bytes);
  if (through.IsSocket()) return file + " is a socket";
  // Storing overwrites it, first with the kind and then with the device alone.
  if (through.Exists()) return file + " cannot be read by this user";
  const std::string nearest = NearestDirectory(file);
  const std::uint64_t space = SpaceToStore(file);
  if (nearest != DirectoryOf(file)) return WhyNotCreatable(nearest, space);
  const std::string refusal = WhyNotWritable(file, space);
  return refusal.empty() ? WhyNotReplaceable(file, space) : refusal;
}

std::uint64_t SpaceToStore(const std::string& file) {
  const PathFacts through = LookThrough(file);
  if (through.Exists()) return through.size + kMostAdded;
  struct statvfs disk = {};
  ::statvfs(NearestDirectory(file).c_str(), &disk);
  return disk.f_frsize;  // makes two blocks: the new file, and the copy that replaces it
}

// The last few blocks are reserved for root.
std::string WhyNoSpace(const std::string& directory, std::uint64_t bytes) {
  struct statvfs disk = {};
  if (::statvfs(directory.c_str(), &disk) != 0 || disk.f_blocks == 0) return "";
  const std::uint64_t blocks = ::geteuid() == 0 ? disk.f_bfree : disk.f_bavail;
  if (blocks < bytes / disk.f_frsize + 1) return "the disk of " + directory + " is full";
  if (disk.f_files != 0 && disk.f_ffree == 0) {
    return "the disk of " + directory + " has no free inodes";
  }
  return "";
}
