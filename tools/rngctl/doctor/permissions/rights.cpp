#include "tools/rngctl/doctor/permissions/rights.h"

#include <cerrno>
#include <cstring>
#include <sys/xattr.h>

namespace {

constexpr char kAclAttribute[] = "system.posix_acl_access";
constexpr std::uint32_t kAclVersion = 2;

// A missing list and one that cannot be read look the same: the file system may know none.
std::string ReadAttribute(const std::string& path) {
  const ssize_t size = ::lgetxattr(path.c_str(), kAclAttribute, nullptr, 0);
  if (size <= 0) return "";
  std::string bytes(static_cast<std::size_t>(size), '\0');
  const ssize_t got = ::lgetxattr(path.c_str(), kAclAttribute, bytes.data(), bytes.size());
  bytes.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
  return bytes;
}

// To create or replace entries of a directory takes the right to search it, too.
bool Suffices(unsigned permissions, const Rights& rights) {
  const unsigned needed = rights.IsDirectory() ? 3 : 2;
  return (permissions & needed) == needed;
}

unsigned MaskOf(const Rights& rights) {
  for (const AclEntry& entry : rights.acl) {
    if (entry.tag == AclEntry::kMask) return entry.permissions;
  }
  return 7;
}

std::string MembersOf(const Users& users, gid_t group) {
  return "the members of " + users.NameOfGroup(group);
}

void AddOfAcl(std::vector<Writer>& writers, const std::string& path, const AclEntry& entry,
              const Rights& rights, const Users& users) {
  const std::string id = std::to_string(entry.id);
  if (entry.tag == AclEntry::kUser && !users.IsTrusted(entry.id)) {
    writers.push_back({users.NameOfUser(entry.id), "setfacl -x u:" + id + " " + path});
  }
  if (entry.tag == AclEntry::kGroup && users.HasOthers(entry.id)) {
    writers.push_back({MembersOf(users, entry.id), "setfacl -x g:" + id + " " + path});
  }
  if (entry.tag == AclEntry::kOwningGroup && users.HasOthers(rights.group)) {
    writers.push_back({MembersOf(users, rights.group), "setfacl -m g::rX " + path});
  }
}

// With a list, the group's bits of the mode are the list's mask, and say nothing about the group.
void AddGroups(std::vector<Writer>& writers, const std::string& path, const Rights& rights,
               const Users& users) {
  const unsigned mask = MaskOf(rights);
  for (const AclEntry& entry : rights.acl) {
    if (Suffices(entry.permissions & mask, rights)) AddOfAcl(writers, path, entry, rights, users);
  }
  if (rights.acl.empty() && Suffices(rights.mode >> 3U, rights) && users.HasOthers(rights.group)) {
    writers.push_back({MembersOf(users, rights.group), "chmod g-w " + path});
  }
}

}  // namespace

std::vector<AclEntry> ParseAcl(const std::string& bytes) {
  std::uint32_t version = 0;
  const bool isWhole =
      bytes.size() >= sizeof version && (bytes.size() - sizeof version) % sizeof(AclEntry) == 0;
  if (isWhole) std::memcpy(&version, bytes.data(), sizeof version);
  if (version != kAclVersion) return {};
  std::vector<AclEntry> entries;
  for (std::size_t place = sizeof version; place < bytes.size(); place += sizeof(AclEntry)) {
    AclEntry entry = {};
    std::memcpy(&entry, bytes.data() + place, sizeof entry);
    entries.push_back(entry);
  }
  return entries;
}

Rights ReadRights(const std::string& path) {
  struct stat status = {};
  if (::lstat(path.c_str(), &status) != 0) return {errno};
  const bool isLink = S_ISLNK(status.st_mode);
  return {0,
          status.st_mode,
          status.st_uid,
          status.st_gid,
          status.st_nlink,
          isLink ? std::vector<AclEntry>{} : ParseAcl(ReadAttribute(path))};
}

std::vector<Writer> FindWriters(const std::string& path, const Rights& rights, const Users& users) {
  std::vector<Writer> writers;
  if (!rights.Exists() || rights.IsLink()) return writers;
  if (!users.IsTrusted(rights.owner)) {
    writers.push_back({users.NameOfUser(rights.owner), "chown root " + path, true});
  }
  if (Suffices(rights.mode, rights)) {
    // Then the group hardly matters, unless the fix left it as it is.
    const bool alsoGroup = Suffices(rights.mode >> 3U, rights);
    writers.push_back({"everyone", (alsoGroup ? "chmod go-w " : "chmod o-w ") + path});
  } else {
    AddGroups(writers, path, rights, users);
  }
  return writers;
}
