#include "tools/rngctl/doctor/openssl/user.h"

#include "tools/rngctl/terminal/text.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <unistd.h>

std::string BecomeUser(const std::string& name) {
  if (name.empty()) return "";
  const passwd* const user = ::getpwnam(name.c_str());
  if (!user) return "There is no user " + Quoted(name) + ".";
  if (user->pw_uid == ::geteuid()) return "";
  if (::geteuid() != 0) return "Only root can draw as another user. Run this command with sudo.";
  const uid_t id = user->pw_uid;
  const gid_t group = user->pw_gid;
  if (::initgroups(name.c_str(), group) != 0 || ::setgid(group) != 0 || ::setuid(id) != 0) {
    return "This process cannot become the user " + Quoted(name) + ": " + std::strerror(errno) +
           ".";
  }
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // the change has cleared it
  return "";
}
