#include "plugins/interactive/start_helper.h"

#include "plugins/interactive/start_orphan.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// The variables that the helper gets. None of them names a library or module to load.
constexpr const char* kKept[] = {
    "TERM", "DISPLAY", "XAUTHORITY", "HOME",
    // The user's language.
    "LANG", "LANGUAGE", "LC_ALL", "LC_CTYPE", "LC_MESSAGES",
    // They show whether the user is connected over a network.
    "SSH_TTY", "SSH_CLIENT", "SSH_CONNECTION", "TMUX", "STY",
    // The desktop whose style the dialog takes, and the bus that screen readers use.
    "XDG_CURRENT_DESKTOP", "KDE_SESSION_VERSION", "XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS"};
constexpr std::size_t kMostVariables = sizeof kKept / sizeof *kKept;

// "NAME=value" for each kept variable that is set. Built before the process is copied, because memory cannot
// be allocated in the copy of a process with threads.
class Environment {
 public:
  Environment() {
    for (const char* const name : kKept) {
      const char* const value = std::getenv(name);
      const std::size_t size = value ? std::strlen(name) + std::strlen(value) + 2 : 0;
      char* const entry = size ? static_cast<char*>(std::malloc(size)) : nullptr;
      if (!entry) continue;
      std::snprintf(entry, size, "%s=%s", name, value);
      entries[count++] = entry;
    }
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() {
    for (std::size_t i = 0; i < count; ++i) std::free(entries[i]);
  }
  char* const* Get() const { return entries; }

 private:
  char* entries[kMostVariables + 1] = {};
  std::size_t count = 0;
};

}  // namespace

int StartHelper(const char* path) { return StartOrphan(path, Environment().Get()); }
