#include "tools/rngctl/files/users.h"

#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <grp.h>
#include <memory>
#include <pwd.h>
#include <unistd.h>

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::vector<Users::User> ReadUsers() {
  std::vector<Users::User> users;
  const File file(std::fopen("/etc/passwd", "re"));
  while (const passwd* const entry = file ? ::fgetpwent(file.get()) : nullptr) {
    users.push_back({entry->pw_name, entry->pw_uid, entry->pw_gid});
  }
  return users;
}

std::vector<Users::Group> ReadGroups() {
  std::vector<Users::Group> groups;
  const File file(std::fopen("/etc/group", "re"));
  while (const group* const entry = file ? ::fgetgrent(file.get()) : nullptr) {
    Users::Group found{entry->gr_name, entry->gr_gid, {}};
    for (char** member = entry->gr_mem; *member; ++member) found.members.emplace_back(*member);
    groups.push_back(found);
  }
  return groups;
}

// In a user namespace, files of users that it does not map seem to belong to this one. Who they are
// cannot be told, so they are not held against anybody. Where the namespace maps it, it is a user like
// any other.
constexpr uid_t kUnmapped = 65534;

bool HasUnmappedOwners() {
  std::ifstream map("/proc/self/uid_map");
  bool isMapped = false;
  bool isKnown = false;
  std::uint64_t inside = 0;
  std::uint64_t outside = 0;
  std::uint64_t count = 0;
  while (map >> inside >> outside >> count) {
    isKnown = true;
    isMapped = isMapped || (inside <= kUnmapped && kUnmapped - inside < count);
  }
  return isKnown && !isMapped;
}

void AddCallerOfSudo(std::vector<uid_t>& trusted) {
  const char* const text = std::getenv("SUDO_UID");
  if (!text || ::geteuid() != 0) return;
  const char* const end = text + std::strlen(text);
  uid_t user = 0;
  const auto [rest, error] = std::from_chars(text, end, user);
  if (error == std::errc() && rest == end) trusted.push_back(user);
}

std::string Named(const std::string& what, const std::string& name, unsigned id) {
  return "the " + what + " " + (name.empty() ? std::to_string(id) : Quoted(name));
}

}  // namespace

bool Users::IsTrusted(uid_t user) const {
  return std::find(trusted.begin(), trusted.end(), user) != trusted.end();
}

bool Users::HasOthers(gid_t group) const {
  const auto hasId = [group](const Group& each) { return each.id == group; };
  if (group == 0 || std::none_of(groups.begin(), groups.end(), hasId)) return true;
  const auto isMember = [this, group](const User& user) {
    const auto lists = [&user, group](const Group& each) {
      return each.id == group &&
             std::find(each.members.begin(), each.members.end(), user.name) != each.members.end();
    };
    return user.group == group || std::any_of(groups.begin(), groups.end(), lists);
  };
  return std::any_of(users.begin(), users.end(), [this, &isMember](const User& user) {
    return !IsTrusted(user.id) && isMember(user);
  });
}

std::string Users::NameOfUser(uid_t user) const {
  const auto found = std::find_if(users.begin(), users.end(),
                                  [user](const User& each) { return each.id == user; });
  return Named("user", found == users.end() ? "" : found->name, user);
}

std::string Users::NameOfGroup(gid_t group) const {
  const auto found = std::find_if(groups.begin(), groups.end(),
                                  [group](const Group& each) { return each.id == group; });
  return Named("group", found == groups.end() ? "" : found->name, group);
}

Users FindUsers() {
  Users users{ReadUsers(), ReadGroups(), {0, ::geteuid()}};
  AddCallerOfSudo(users.trusted);
  if (HasUnmappedOwners()) users.trusted.push_back(kUnmapped);
  return users;
}
