// Disturbs its process while the library asks whether it is available: the macro DISTURB is the function
// below that says how.

#include "tests/fake_plugins/correct_rng.h"

#include <csetjmp>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// --- Signals

[[maybe_unused]] void RaiseAlarm() { std::raise(SIGALRM); }

[[maybe_unused]] void RaiseTerminalStop() { std::raise(SIGTSTP); }

[[maybe_unused]] void KillItself() { std::raise(SIGKILL); }

[[maybe_unused]] void WaitForTimer() {
  const itimerval timer = {{0, 0}, {0, 1000}};
  ::setitimer(ITIMER_REAL, &timer, nullptr);
  ::pause();
}

[[maybe_unused]] void BlockSignals() {
  sigset_t all;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

[[maybe_unused]] void IgnoreSignals() {
  for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_IGN);
}

[[maybe_unused]] void ExitWhenCrashing() {
  std::signal(SIGSEGV, [](int) { ::_exit(0); });
  std::raise(SIGSEGV);
}

sigjmp_buf g_place;

[[maybe_unused]] void SurviveACrash() {
  std::signal(SIGSEGV, [](int) { ::siglongjmp(g_place, 1); });
  if (::sigsetjmp(g_place, 1) == 0) std::raise(SIGSEGV);
}

// --- The end of the process or of the thread

[[maybe_unused]] void EndThread() { ::pthread_exit(nullptr); }

[[maybe_unused]] void ExitQuickly() { std::quick_exit(3); }

[[maybe_unused]] void Terminate() { std::terminate(); }

[[maybe_unused]] void* Exit(void*) { std::exit(5); }

[[maybe_unused]] void ExitInAThread() {
  pthread_t thread;
  ::pthread_create(&thread, nullptr, &Exit, nullptr);
  ::pthread_join(thread, nullptr);
}

[[maybe_unused]] void BecomeAnotherProgram() { ::execl("/bin/true", "true", nullptr); }

[[maybe_unused]] void BecomeADaemon() {
  if (::fork() != 0) ::_exit(0);
  ::usleep(200000);
  ::_exit(0);
}

[[maybe_unused]] int Overflow(int depth) {
  volatile char frame[4096] = {};
  frame[depth % 4096] = 1;
  return frame[0] + (depth < 0 ? 0 : Overflow(depth + 1)) + frame[1];
}

[[maybe_unused]] void OverflowTheStack() { Overflow(0); }

// --- Descriptors and processes

[[maybe_unused]] void CloseDescriptors() { ::close_range(3, ~0U, 0); }

[[maybe_unused]] void CloseStandardDescriptors() { ::close_range(0, 2, 0); }

[[maybe_unused]] void WriteToLowDescriptors() {
  for (int number = 3; number <= 20; ++number) {
    static_cast<void>(::write(number, "garbage", 7));
  }
}

[[maybe_unused]] void RedirectErrors() {
  const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  ::dup2(null, STDERR_FILENO);
  ::close(null);
}

[[maybe_unused]] void ForkAndExit() {
  const pid_t child = ::fork();
  if (child == 0) std::exit(0);
  ::waitpid(child, nullptr, 0);
}

[[maybe_unused]] void RunACommand() { static_cast<void>(std::system("true")); }

[[maybe_unused]] void WaitForAnyChild() {
  while (::wait(nullptr) > 0) {
  }
}

// --- What the process may do

[[maybe_unused]] void LowerDescriptorLimit() {
  const rlimit limit = {3, 3};
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

[[maybe_unused]] void LowerMemoryLimit() {
  const rlimit limit = {1, 1};
  ::setrlimit(RLIMIT_DATA, &limit);
}

[[maybe_unused]] void HideTheProcess() { ::prctl(PR_SET_DUMPABLE, 0); }

[[maybe_unused]] void LoseThePlace() { static_cast<void>(::chdir("/")); }

[[maybe_unused]] void StartASession() { ::setsid(); }

[[maybe_unused]] void UnloadItself() {
  Dl_info info = {};
  ::dladdr(reinterpret_cast<const void*>(&UnloadItself), &info);
  void* const own = ::dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
  ::dlclose(own);
  ::dlclose(own);
}

// The threads execute and read nothing of this library, which can therefore be closed at any moment.
[[maybe_unused]] void LeaveThreads() {
  auto* const never = new sem_t;
  ::sem_init(never, 0, 0);
  const auto wait = reinterpret_cast<void* (*)(void*)>(reinterpret_cast<void*>(&::sem_wait));
  for (int i = 0; i < 20; ++i) {
    pthread_t thread;
    if (::pthread_create(&thread, nullptr, wait, never) == 0) ::pthread_detach(thread);
  }
}

class DisturbsStartRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    DISTURB();
    return true;
  }
};

}  // namespace

EXPORT_RNG(DisturbsStartRng)
