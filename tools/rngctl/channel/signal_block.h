#ifndef TOOLS_RNGCTL_CHANNEL_SIGNAL_BLOCK_H
#define TOOLS_RNGCTL_CHANNEL_SIGNAL_BLOCK_H

#include <csignal>

/// While it lives, no signal handler runs in this thread: one of a plug-in may call what is locked. Signals
/// that end the process wait, too, but for the one in `exception`.
class SignalBlock {
 public:
  explicit SignalBlock(int exception = 0) {
    sigset_t all;
    ::sigfillset(&all);
    if (exception != 0) ::sigdelset(&all, exception);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
  }
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;
  ~SignalBlock() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }

 private:
  sigset_t before;
};

#endif
