#include "helpers/tty/network.h"

#include <cstdlib>
#include <cstring>
#include <utmpx.h>

namespace {

// Whether the login record names a host. A local display begins with a colon.
bool HasRemoteLogin(const std::string& terminal) {
  utmpx wanted = {};
  if (terminal.empty() || terminal.size() >= sizeof wanted.ut_line) return false;
  std::memcpy(wanted.ut_line, terminal.data(), terminal.size());
  ::setutxent();
  const utmpx* const record = ::getutxline(&wanted);
  const bool isRemote = record && record->ut_host[0] != '\0' && record->ut_host[0] != ':';
  ::endutxent();
  return isRemote;
}

// TERM is checked, too, because sudo removes the other variables.
bool IsInMultiplexer() {
  const char* const type = std::getenv("TERM");
  const std::string name = type ? type : "";
  return std::getenv("TMUX") || std::getenv("STY") || name.rfind("screen", 0) == 0 ||
         name.rfind("tmux", 0) == 0;
}

}  // namespace

bool MayBeRemote(const std::string& terminal) {
  for (const char* const variable : {"SSH_CONNECTION", "SSH_CLIENT", "SSH_TTY"}) {
    if (std::getenv(variable)) return true;
  }
  return IsInMultiplexer() || HasRemoteLogin(terminal);
}
