#include "tests/support/x_server.h"

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

XServer::XServer() {
  int ends[2];
  if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
  process = ::fork();
  if (process == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    const std::string end = std::to_string(ends[1]);
    // Without -noreset the server restarts when its last client leaves, and refuses clients meanwhile.
    ::execlp("Xvfb", "Xvfb", "-noreset", "-displayfd", end.c_str(), "-nolisten", "tcp", nullptr);
    ::_exit(127);
  }
  ::close(ends[1]);
  display = ":";
  for (char c; ::read(ends[0], &c, 1) == 1 && c != '\n';) display += c;
  ::close(ends[0]);
  if (display == ":") throw std::runtime_error("Xvfb does not start");
}

void XServer::Stop() {
  if (process == 0) return;
  ::kill(process, SIGTERM);
  ::waitpid(process, nullptr, 0);
  process = 0;
}
