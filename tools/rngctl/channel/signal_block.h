#ifndef TOOLS_RNGCTL_CHANNEL_SIGNAL_BLOCK_H
#define TOOLS_RNGCTL_CHANNEL_SIGNAL_BLOCK_H

#include <csignal>

/// While it lives, all signals to this thread wait, except `exception`. A plug-in's handler might call what
/// is locked, and a signal without a handler might terminate the process halfway.
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
