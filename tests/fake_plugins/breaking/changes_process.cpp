// Changes the state of the process. The macro CHANGE names the function below that does it.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>
#include <cstdio>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

[[maybe_unused]] void IgnoreBrokenPipes() { std::signal(SIGPIPE, SIG_IGN); }

[[maybe_unused]] void Restrict() {
  ::umask(0777);
  static_cast<void>(::chdir("/dev"));
}

[[maybe_unused]] void StartTimer() {
  const itimerval timer = {{0, 0}, {1000, 0}};
  ::setitimer(ITIMER_REAL, &timer, nullptr);
}

[[maybe_unused]] void LendVariable() {
  static char variable[] = "RNG_LENT=1";
  ::putenv(variable);
}

[[maybe_unused]] void LendBuffer() {
  static char buffer[BUFSIZ];
  std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
}

[[maybe_unused]] void LeaveChild() {
  if (::fork() != 0) return;
  ::pause();
  ::_exit(0);
}

class ChangesProcessRng final : public CorrectRng {
 public:
  void Release() override { CHANGE(); }
};

}  // namespace

EXPORT_RNG(ChangesProcessRng)
