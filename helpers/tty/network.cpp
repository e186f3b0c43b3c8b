#include "helpers/tty/network.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <utmpx.h>

namespace {

// The remote host of the terminal's login record. A local display begins with a colon.
bool HasRemoteLogin(const std::string& line) {
  utmpx wanted = {};
  std::strncpy(wanted.ut_line, line.c_str(), sizeof wanted.ut_line);
  ::setutxent();
  const utmpx* const record = ::getutxline(&wanted);
  const bool isRemote = record && record->ut_host[0] != '\0' && record->ut_host[0] != ':';
  ::endutxent();
  return isRemote;
}

}  // namespace

bool MayBeRemote(int terminal) {
  for (const char* const variable : {"SSH_CONNECTION", "SSH_CLIENT", "SSH_TTY", "TMUX", "STY"}) {
    if (std::getenv(variable)) return true;
  }
  char name[64] = "";
  const bool hasName =
      ::ttyname_r(terminal, name, sizeof name) == 0 && std::strncmp(name, "/dev/", 5) == 0;
  return hasName && HasRemoteLogin(name + 5);
}
