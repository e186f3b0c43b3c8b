#include "tools/rngctl/process/interruption.h"

#include <cstdlib>

namespace {

volatile std::sig_atomic_t g_signal = 0;

void Remember(int signal) { g_signal = signal; }

}  // namespace

void EndBySignal(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::_Exit(128 + signal);  // only as process 1 of a container, which no signal ends
}

InterruptionWatch::InterruptionWatch() {
  g_signal = 0;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction old = {};
    ::sigaction(signal, nullptr, &old);
    if (old.sa_handler == SIG_IGN) continue;
    struct sigaction action = {};
    action.sa_handler = Remember;
    ::sigaction(signal, &action, nullptr);
    before.push_back({signal, old});
  }
}

InterruptionWatch::~InterruptionWatch() {
  for (const Before& entry : before) ::sigaction(entry.signal, &entry.action, nullptr);
}

int InterruptionWatch::Signal() { return g_signal; }
