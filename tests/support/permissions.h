#ifndef TESTS_SUPPORT_PERMISSIONS_H
#define TESTS_SUPPORT_PERMISSIONS_H

#include "tests/support/tree.h"

#include <filesystem>
#include <grp.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

/// While it exists, permission bits apply to this process even if the tests run as root. It lets every
/// user enter the tree.
class Unprivileged {
 public:
  Unprivileged() {
    std::filesystem::permissions(TreePath(""), std::filesystem::perms(0755));
    if (!wasRoot) return;
    // The real ids, too: access() checks those.
    if (::setgroups(0, nullptr) != 0 || ::setresgid(kNobody, kNobody, 0) != 0 ||
        ::setresuid(kNobody, kNobody, 0) != 0) {
      throw std::runtime_error("cannot give up being root");
    }
  }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;
  ~Unprivileged() {
    if (!wasRoot) return;
    const bool isRoot = ::setresuid(0, 0, 0) == 0 && ::setresgid(0, 0, 0) == 0;
    ::prctl(PR_SET_DUMPABLE, isRoot);  // the leak checker must be able to trace the process
  }

 private:
  static constexpr unsigned kNobody = 65534;
  const bool wasRoot = ::geteuid() == 0;
};

/// While it exists, files and directories are created with this umask.
class Umask {
 public:
  explicit Umask(mode_t mask) : before(::umask(mask)) {}
  Umask(const Umask&) = delete;
  Umask& operator=(const Umask&) = delete;
  ~Umask() { ::umask(before); }

 private:
  const mode_t before;
};

/// The permission bits of a file.
inline unsigned ModeOf(const std::string& path) {
  return static_cast<unsigned>(std::filesystem::status(path).permissions());
}

#endif
