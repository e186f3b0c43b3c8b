#include "tests/support/x_server.h"

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

int g_servers = 0;  // so far

// Not the lowest free one: when a server stops, a server of another process would soon have the same display.
std::string ChooseDisplay() {
  constexpr int kFirst = 1000;
  constexpr int kDisplays = 50'000;
  return ":" + std::to_string(kFirst + (::getpid() + 7919 * g_servers++) % kDisplays);
}

}  // namespace

XServer::XServer(const std::vector<std::string>& options) {
  int ends[2];
  if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
  const std::string wanted = ChooseDisplay();
  process = ::fork();
  if (process == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    const std::string end = std::to_string(ends[1]);
    // Without -noreset the server restarts when its last client leaves, and refuses clients meanwhile.
    std::vector<const char*> arguments = {"Xvfb",      wanted.c_str(), "-noreset", "-displayfd",
                                          end.c_str(), "-nolisten",    "tcp"};
    for (const std::string& option : options) arguments.push_back(option.c_str());
    arguments.push_back(nullptr);
    ::execvp("Xvfb", const_cast<char**>(arguments.data()));
    ::_exit(127);
  }
  ::close(ends[1]);
  display = ":";
  for (char c; ::read(ends[0], &c, 1) == 1 && c != '\n';) display += c;
  ::close(ends[0]);
  if (display == ":") throw std::runtime_error("Xvfb does not start");
}

void XServer::Send(int signal) const { ::kill(process, signal); }

void XServer::Stop() {
  if (process == 0) return;
  ::kill(process, SIGTERM);
  ::waitpid(process, nullptr, 0);
  process = 0;
}
