#include "tools/rngctl/process/state.h"

#include <cfenv>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <iostream>
#include <sched.h>
#include <sys/mman.h>
#include <sys/personality.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xmmintrin.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

namespace {

std::vector<std::string> Changes(const std::function<void()>& act) {
  const ProcessSnapshot before = CaptureProcessState();
  act();
  return Compare(before, CaptureProcessState());
}

char* UnmappedPage() {
  void* const page =
      ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ::munmap(page, 4096);
  return static_cast<char*>(page);
}

void Handle(int) {}

}  // namespace

TEST(ProcessSnapshot, OfAQuietProcessStaysTheSame) {
  EXPECT_THAT(Changes([] { ::getpid(); }), IsEmpty());
}

TEST(ProcessSnapshot, NamesSignalsThatAreTreatedDifferently) {
  EXPECT_THAT(Changes([] { std::signal(SIGPIPE, SIG_IGN); }), ElementsAre("ignores SIGPIPE"));
  EXPECT_THAT(Changes([] { std::signal(SIGPIPE, SIG_DFL); }),
              ElementsAre("resets SIGPIPE to its default action"));
  EXPECT_THAT(Changes([] { std::signal(SIGUSR1, Handle); }),
              ElementsAre(MatchesRegex("leaves a handler for SIGUSR1 in .+")));
  EXPECT_THAT(
      Changes([] { std::signal(SIGRTMIN + 2, reinterpret_cast<sighandler_t>(UnmappedPage())); }),
      ElementsAre("leaves a handler for SIGRTMIN+2 in memory that is no longer mapped"));
}

TEST(ProcessSnapshot, ADefaultActionThatIsRestoredBySignalIsTheSame) {
  EXPECT_THAT(Changes([] { std::signal(SIGUSR1, std::signal(SIGUSR1, Handle)); }), IsEmpty());
}

TEST(ProcessSnapshot, SeesThatEndedChildrenWouldDisappear) {
  EXPECT_THAT(Changes([] {
                struct sigaction action = {};
                action.sa_flags = SA_NOCLDWAIT;
                ::sigaction(SIGCHLD, &action, nullptr);
              }),
              ElementsAre("changes the flags of the action for SIGCHLD"));
}

TEST(ProcessSnapshot, NamesBlockedSignals) {
  EXPECT_THAT(Changes([] {
                sigset_t mask;
                ::sigemptyset(&mask);
                ::sigaddset(&mask, SIGINT);
                ::pthread_sigmask(SIG_BLOCK, &mask, nullptr);
              }),
              ElementsAre("blocks SIGINT"));
}

TEST(ProcessSnapshot, NamesWhatTheProcessHasOnlyOnce) {
  EXPECT_THAT(Changes([] { ::umask(0177); }), ElementsAre("changes the umask to 0177"));
  EXPECT_THAT(Changes([] { ASSERT_EQ(0, ::chdir("/dev")); }),
              ElementsAre("changes the working directory to /dev"));
  EXPECT_THAT(Changes([] { ASSERT_TRUE(std::setlocale(LC_CTYPE, "C.UTF-8")); }),
              ElementsAre(MatchesRegex("changes the locale to .*C.UTF-8.*")));
  EXPECT_THAT(Changes([] { ASSERT_EQ(0, ::setpriority(PRIO_PROCESS, 0, 7)); }),
              ElementsAre("changes the priority to 7"));
  EXPECT_THAT(Changes([] { ASSERT_EQ(0, ::prctl(PR_SET_DUMPABLE, 0)); }),
              ElementsAre("changes the dumpable flag to 0"));
  EXPECT_THAT(Changes([] { ::uselocale(::newlocale(LC_ALL_MASK, "C", nullptr)); }),
              ElementsAre("changes the locale of the thread to its own"));
  EXPECT_THAT(Changes([] {
                const sched_param none = {};
                ASSERT_EQ(0, ::sched_setscheduler(0, SCHED_BATCH, &none));
              }),
              ElementsAre("changes the scheduling policy to 3"));
  EXPECT_THAT(Changes([] {
                static char memory[65536];
                const stack_t stack = {memory, 0, sizeof memory};
                ASSERT_EQ(0, ::sigaltstack(&stack, nullptr));
              }),
              ElementsAre("changes the alternate signal stack to one of 65536 bytes"));
  EXPECT_THAT(Changes([] { ASSERT_EQ(0, ::personality(ADDR_NO_RANDOMIZE)); }),
              ElementsAre("changes the personality to 262144"));
}

// Only a process that leads no group can start a session.
TEST(ProcessSnapshot, NamesGroupAndSession) {
  const pid_t child = ::fork();
  if (child == 0) {
    const std::string own = std::to_string(::getpid());
    EXPECT_THAT(Changes([] { ::setsid(); }), ElementsAre("changes the process group to " + own,
                                                         "changes the session to " + own));
    ::_exit(HasFailure() ? 1 : 0);
  }
  int status = -1;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
}

TEST(ProcessSnapshot, NamesUserAndGroup) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  ::prctl(PR_SET_DUMPABLE, 0);  // each change would clear it
  EXPECT_THAT(Changes([] { ASSERT_EQ(0, ::setegid(65534)); }),
              ElementsAre("changes the group ID to 65534"));
  EXPECT_THAT(Changes([] { ASSERT_EQ(0, ::seteuid(65534)); }),
              ElementsAre("changes the user ID to 65534"));
  ASSERT_EQ(0, ::seteuid(0));
  ASSERT_EQ(0, ::setegid(0));
}

TEST(ProcessSnapshot, NamesLimits) {
  EXPECT_THAT(Changes([] {
                rlimit limit = {};
                ::getrlimit(RLIMIT_NOFILE, &limit);
                limit.rlim_cur = 99;
                ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &limit));
              }),
              ElementsAre("changes the limit RLIMIT_NOFILE to 99"));
}

TEST(ProcessSnapshot, NamesWhatChangesArithmetic) {
  EXPECT_THAT(Changes([] { std::fesetround(FE_UPWARD); }),
              ElementsAre(MatchesRegex("changes the rounding of floating-point numbers to .+")));
  EXPECT_THAT(Changes([] { _mm_setcsr(_mm_getcsr() | 0x8000U); }),
              ElementsAre("changes the treatment of very small floating-point numbers to zero"));
  EXPECT_THAT(Changes([] { ::feenableexcept(FE_DIVBYZERO); }),
              ElementsAre("changes the floating-point exceptions that raise a signal to mask 4"));
}

TEST(ProcessSnapshot, NamesTimers) {
  const auto setTimer = [](long seconds) {
    const itimerval timer = {{0, 0}, {seconds, 0}};
    ::setitimer(ITIMER_VIRTUAL, &timer, nullptr);
  };
  EXPECT_THAT(Changes([&] { setTimer(1000); }),
              ElementsAre("leaves a timer running: ITIMER_VIRTUAL"));
  EXPECT_THAT(Changes([&] { setTimer(0); }),
              ElementsAre("stops a timer of the host: ITIMER_VIRTUAL"));
}

TEST(ProcessSnapshot, NamesVariables) {
  EXPECT_THAT(Changes([] { ::setenv("STATE_A", "1", 1); }),
              ElementsAre("sets the environment variable STATE_A"));
  EXPECT_THAT(Changes([] { ::setenv("STATE_A", "2", 1); }),
              ElementsAre("changes the environment variable STATE_A"));
  EXPECT_THAT(Changes([] { ::unsetenv("STATE_A"); }),
              ElementsAre("removes the environment variable STATE_A"));
}

TEST(ProcessSnapshot, NamesPosixTimers) {
  timer_t timer = {};
  const auto begin = [&] {
    sigevent event = {};
    event.sigev_notify = SIGEV_NONE;
    const itimerspec inAnHour = {{0, 0}, {3600, 0}};
    ASSERT_EQ(0, ::timer_create(CLOCK_MONOTONIC, &event, &timer));
    ASSERT_EQ(0, ::timer_settime(timer, 0, &inAnHour, nullptr));
  };
  begin();
  const bool isListed = std::ifstream("/proc/self/timers").get() != EOF;
  ::timer_delete(timer);
  if (!isListed) GTEST_SKIP() << "this kernel does not list the timers of a process";
  EXPECT_THAT(Changes(begin),
              ElementsAre(MatchesRegex("leaves a timer running: POSIX timer [0-9]+")));
  EXPECT_THAT(Changes([&] { ::timer_delete(timer); }),
              ElementsAre(MatchesRegex("stops a timer of the host: POSIX timer [0-9]+")));
}

TEST(ProcessSnapshot, SeesVariablesInALibraryAndInMemoryThatIsGone) {
  static char text[] = "STATE_B=1";
  EXPECT_THAT(Changes([] { ::putenv(text); }),
              ElementsAre(MatchesRegex("leaves part of the environment in .+: STATE_B")));
  ::unsetenv("STATE_B");
  char* entries[] = {UnmappedPage(), nullptr};
  char** const own = environ;
  const ProcessSnapshot before = CaptureProcessState();
  environ = entries;
  const ProcessSnapshot lost = CaptureProcessState();
  environ = reinterpret_cast<char**>(UnmappedPage());
  const ProcessSnapshot lostWhole = CaptureProcessState();
  environ = own;
  EXPECT_THAT(
      Compare(before, lost),
      testing::Contains("leaves part of the environment in memory that is no longer mapped"));
  EXPECT_THAT(
      Compare(before, lostWhole),
      testing::Contains("leaves part of the environment in memory that is no longer mapped"));
  EXPECT_THAT(Compare(lostWhole, before),
              testing::Each(testing::StartsWith("sets the environment variable ")));
}

TEST(ProcessSnapshot, SeesBuffersInALibraryAndInMemoryThatIsGone) {
  static char buffer[64];
  EXPECT_THAT(Changes([] { std::setvbuf(stdin, buffer, _IOFBF, sizeof buffer); }),
              ElementsAre(MatchesRegex("leaves the buffer of stdin in .+")));
  EXPECT_THAT(Changes([] { std::setvbuf(stdin, UnmappedPage(), _IOFBF, 64); }),
              ElementsAre("leaves the buffer of stdin in memory that is no longer mapped"));
  EXPECT_THAT(Changes([] { std::setvbuf(stdin, nullptr, _IONBF, 0); }), IsEmpty());
  for (const auto& [file, name] : {std::pair(stdout, "stdout"), std::pair(stderr, "stderr")}) {
    EXPECT_THAT(Changes([&] { std::setvbuf(file, buffer, _IOFBF, sizeof buffer); }),
                ElementsAre(MatchesRegex(std::string("leaves the buffer of ") + name + " in .+")));
    std::setvbuf(file, nullptr, _IONBF, 0);
  }
  for (const auto& [stream, name] : {std::pair<std::ios*, std::string>(&std::cin, "std::cin"),
                                     {&std::cout, "std::cout"},
                                     {&std::cerr, "std::cerr"}}) {
    std::streambuf* const own = stream->rdbuf();
    const ProcessSnapshot before = CaptureProcessState();
    stream->rdbuf(reinterpret_cast<std::streambuf*>(UnmappedPage()));
    const ProcessSnapshot after = CaptureProcessState();
    stream->rdbuf(own);
    EXPECT_THAT(Compare(before, after), ElementsAre("leaves the buffer of " + name +
                                                    " in memory that is no longer mapped"));
  }
}

TEST(ProcessSnapshot, SeesStandardStreamsThatAreReplacedOrClosed) {
  const int other = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
  EXPECT_THAT(Changes([other] { ::dup2(other, STDIN_FILENO); }),
              ElementsAre("replaces standard input"));
  EXPECT_THAT(Changes([] { ::fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK); }),
              ElementsAre("changes the flag O_NONBLOCK of standard input"));
  EXPECT_THAT(Changes([] { ::close(STDIN_FILENO); }), ElementsAre("closes standard input"));
  EXPECT_THAT(Changes([] { ::open("/dev/null", O_RDONLY | O_CLOEXEC); }),
              ElementsAre("opens a file as standard input"));
  for (const auto& [stream, name] : {std::pair<int, std::string>(STDOUT_FILENO, "standard output"),
                                     {STDERR_FILENO, "standard error"}}) {
    const int own = ::dup(stream);
    const std::vector<std::string> changes = Changes([&] { ::dup2(other, stream); });
    ::dup2(own, stream);
    EXPECT_THAT(changes, ElementsAre("replaces " + name));
  }
}

TEST(ProcessSnapshot, NamesChildren) {
  pid_t child = 0;
  EXPECT_THAT(Changes([&child] {
                child = ::fork();
                if (child != 0) return;
                ::pause();
                ::_exit(0);
              }),
              ElementsAre(MatchesRegex(
                  "leaves a child process: a forked copy of the program \\(process [0-9]+\\)")));
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}
