#include "helpers/tty/signals.h"

#include <csignal>
#include <initializer_list>
#include <sys/signalfd.h>
#include <unistd.h>

Signals::Signals() {
  sigset_t handled;
  ::sigemptyset(&handled);
  for (const int number :
       {SIGTERM, SIGHUP, SIGINT, SIGQUIT, SIGTSTP, SIGCONT, SIGTTIN, SIGTTOU, SIGPIPE, SIGALRM}) {
    ::sigaddset(&handled, number);
  }
  ::sigprocmask(SIG_SETMASK, &handled, nullptr);
  descriptor = ::signalfd(-1, &handled, SFD_CLOEXEC | SFD_NONBLOCK);
}

Signals::~Signals() { ::close(descriptor); }

int Signals::Next() const {
  signalfd_siginfo signal = {};
  return ::read(descriptor, &signal, sizeof signal) == sizeof signal
             ? static_cast<int>(signal.ssi_signo)
             : 0;
}
