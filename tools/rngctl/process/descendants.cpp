#include "tools/rngctl/process/descendants.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::vector<pid_t> ListNewChildren(const std::set<pid_t>& known) {
  std::vector<pid_t> children;
  for (const pid_t child : ListChildren()) {
    if (!known.contains(child)) children.push_back(child);
  }
  return children;
}

// From "4711 (name) S 42 ...". The name may hold anything.
pid_t ParentOf(const std::string& process) {
  std::string text;
  std::getline(std::ifstream("/proc/" + process + "/stat"), text, '\0');
  std::istringstream rest(text.substr(std::min(text.size(), text.rfind(')') + 1)));
  std::string state;
  pid_t parent = 0;
  rest >> state >> parent;
  return parent;
}

// A process that was left behind and has ended since.
bool HasEnded(pid_t child) { return ::waitpid(child, nullptr, WNOHANG) != 0; }

}  // namespace

void BecomeDependent() {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit none = {0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
}

void AdoptDescendants() { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }

std::set<pid_t> ListChildren() {
  siginfo_t unused = {};
  const bool hasAny = ::waitid(P_ALL, 0, &unused, WEXITED | WNOHANG | WNOWAIT | __WALL) == 0;
  std::set<pid_t> children;
  if (!hasAny) return children;
  std::error_code unknown;
  for (const auto& entry : fs::directory_iterator("/proc", unknown)) {
    const std::string name = entry.path().filename();
    if (std::isdigit(static_cast<unsigned char>(name[0])) == 0) continue;
    if (ParentOf(name) == ::getpid()) children.insert(std::stoi(name));
  }
  return children;
}

std::vector<std::string> NameNewChildren(const std::set<pid_t>& known) {
  std::vector<std::string> names;
  for (const pid_t child : ListNewChildren(known)) {
    if (HasEnded(child)) continue;
    const std::string number = std::to_string(child);
    std::string name;
    std::getline(std::ifstream("/proc/" + number + "/comm"), name);
    names.push_back(name.append(" (process ").append(number).append(")"));
  }
  return names;
}

void EndNewChildren(const std::set<pid_t>& known) {
  for (auto children = ListNewChildren(known); !children.empty();
       children = ListNewChildren(known)) {
    for (const pid_t child : children) ::kill(child, SIGKILL);
    for (const pid_t child : children) {
      while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
      }
    }
  }
}
