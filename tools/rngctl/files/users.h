#ifndef TOOLS_RNGCTL_FILES_USERS_H
#define TOOLS_RNGCTL_FILES_USERS_H

#include <string>
#include <sys/types.h>
#include <vector>

/// The accounts of this machine, and who of them may write what the library uses.
struct Users {
  struct User {
    std::string name;
    uid_t id;
    gid_t group;
  };
  struct Group {
    std::string name;
    gid_t id;
    std::vector<std::string> members;
  };
  std::vector<User> users = {};
  std::vector<Group> groups = {};
  std::vector<uid_t> trusted = {0};  ///< root and the present user

  bool IsTrusted(uid_t user) const;

  /// Whether the group may have a member who is not trusted. True also for a group that is not listed,
  /// and for root's: service programs often keep that group when they give up being root.
  bool HasOthers(gid_t group) const;

  /// The user "daemon" or, without a name, the user 4711.
  std::string NameOfUser(uid_t user) const;
  std::string NameOfGroup(gid_t group) const;
};

/// Reads /etc/passwd and /etc/group. Services that know more accounts are not asked: they may hang.
/// With sudo, the user who ran it is the present user, too.
Users FindUsers();

#endif
