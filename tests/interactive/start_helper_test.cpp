// How the program for a draw is started, and what it inherits.

#include "plugins/interactive/start_helper.h"

#include "tests/support/open_files.h"
#include "tests/support/refused_call.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using testing::HasSubstr;
using testing::Not;

namespace {

std::string ReadToEnd(int socket) {
  std::string text;
  char part[4096];
  ssize_t count = 0;
  while ((count = ::read(socket, part, sizeof part)) > 0) {
    text.append(part, static_cast<std::size_t>(count));
  }
  ::close(socket);
  return text;
}

std::string WhatIsInherited() { return ReadToEnd(StartHelper(INHERITED)); }

volatile sig_atomic_t g_signals = 0;

}  // namespace

TEST(StartHelper, GivesTheSocketAndNoOtherDescriptors) {
  ::dup2(STDERR_FILENO, 100);
  ::dup2(STDERR_FILENO, 3000);
  EXPECT_THAT(WhatIsInherited(),
              HasSubstr("descriptors 0=/dev/null 1=/dev/null 2=/dev/null 3=socket\n"));
}

TEST(StartHelper, WorksWithoutStandardStreams) {
  const int errors = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 10);
  for (int number = 0; number < 3; ++number) ::close(number);
  const std::string inherited = WhatIsInherited();
  ::dup2(errors, STDOUT_FILENO);
  ::dup2(errors, STDERR_FILENO);
  EXPECT_THAT(inherited, HasSubstr("descriptors 0=/dev/null 1=/dev/null 2=/dev/null 3=socket\n"));
}

// As before Linux 5.9.
TEST(StartHelper, GivesNoOtherDescriptorsWhereThereIsNoCallForThat) {
  const rlimit few = {1024, 4096};
  ::setrlimit(RLIMIT_NOFILE, &few);
  ::dup2(STDERR_FILENO, 4);
  ::dup2(STDERR_FILENO, 1023);
  const rlimit fewer = {200, 4096};
  ::setrlimit(RLIMIT_NOFILE, &fewer);
  ASSERT_TRUE(RefuseCall(SYS_close_range, ENOSYS, 2, 0));
  EXPECT_THAT(WhatIsInherited(),
              HasSubstr("descriptors 0=/dev/null 1=/dev/null 2=/dev/null 3=socket\n"));
}

// As in a directory tree without /proc. The flags are those of stat, not those of fstat.
TEST(StartHelper, WorksWhereTheNamespaceIsUnknown) {
  ASSERT_TRUE(RefuseCall(SYS_newfstatat, ENOENT, 3, 0));
  EXPECT_THAT(WhatIsInherited(), HasSubstr("descriptors"));
}

TEST(StartHelper, ResetsSignals) {
  for (const int number : {SIGTERM, SIGHUP, SIGPIPE, SIGCHLD, SIGUSR1}) ::signal(number, SIG_IGN);
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, nullptr);
  const std::string inherited = WhatIsInherited();
  EXPECT_THAT(inherited, HasSubstr("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n"));
  sigset_t after;
  ::sigprocmask(SIG_SETMASK, nullptr, &after);
  EXPECT_EQ(1, ::sigismember(&after, SIGTERM));
}

TEST(StartHelper, KeepsOnlyVariablesThatSayWhereTheUserIs) {
  ::clearenv();
  for (const char* const name :
       {"LD_PRELOAD", "LD_LIBRARY_PATH", "QT_PLUGIN_PATH", "QT_STYLE_OVERRIDE", "OPENSSL_CONF",
        "OPENSSL_MODULES", "GTK_MODULES", "PATH", "IFS"}) {
    ::setenv(name, "/nowhere", 1);
  }
  ::setenv("TERM", "dumb", 1);
  ::setenv("DISPLAY", ":5", 1);
  ::setenv("LANG", "", 1);
  const std::string inherited = WhatIsInherited();
  EXPECT_THAT(inherited,
              HasSubstr("variable DISPLAY=:5\nvariable LANG=\nvariable TERM=dumb\nfolder"));
  EXPECT_THAT(inherited, Not(HasSubstr("/nowhere")));
}

TEST(StartHelper, KeepsWhatTheFrontEndsNeed) {
  for (const char* const name :
       {"XAUTHORITY", "HOME", "LANGUAGE", "LC_ALL", "LC_CTYPE", "LC_MESSAGES", "SSH_TTY",
        "SSH_CLIENT", "SSH_CONNECTION", "TMUX", "STY", "XDG_CURRENT_DESKTOP", "KDE_SESSION_VERSION",
        "XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS"}) {
    ::setenv(name, "5", 1);
    EXPECT_THAT(WhatIsInherited(), HasSubstr("variable " + std::string(name) + "=5\n"));
  }
}

TEST(StartHelper, GivesNoSocketToOtherProgramsOfTheHost) {
  const int socket = StartHelper(INHERITED);
  EXPECT_EQ(FD_CLOEXEC, ::fcntl(socket, F_GETFD));
  ReadToEnd(socket);
}

TEST(StartHelper, LeavesSignalsAsTheyWere) {
  WhatIsInherited();
  sigset_t after;
  ::sigprocmask(SIG_SETMASK, nullptr, &after);
  for (const int number : {SIGTERM, SIGUSR1}) EXPECT_EQ(0, ::sigismember(&after, number));
}

TEST(StartHelper, LeavesNoMemory) {
  WhatIsInherited();
  const auto before = ::mallinfo2().uordblks;
  for (int i = 0; i < 5; ++i) ::close(StartHelper(INHERITED));
  EXPECT_EQ(before, ::mallinfo2().uordblks);
}

TEST(StartHelper, FailsWhereNoProcessCanBeStarted) {
  const auto before = CountOpenFiles();
  // As where the limit of processes is reached, which does not concern root.
  ASSERT_TRUE(RefuseCall(SYS_clone, EAGAIN, 0, 0));
  EXPECT_EQ(-1, StartHelper(INHERITED));
  EXPECT_EQ(before, CountOpenFiles());
}

// The first process of the new namespace would end at once, and the host could start no other.
TEST(StartHelper, FailsWhereChildrenGoToANewNamespace) {
  if (::unshare(CLONE_NEWPID) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWPID) != 0) {
    GTEST_SKIP() << "this machine permits no namespaces";
  }
  EXPECT_EQ(-1, StartHelper(INHERITED));
  EXPECT_EQ(EPERM, errno);
  const pid_t first = ::fork();
  if (first == 0) {
    for (;;) ::pause();
  }
  EXPECT_EQ(-1, StartHelper(INHERITED));
  EXPECT_EQ(EPERM, errno);
  ::kill(first, SIGKILL);
  ::waitpid(first, nullptr, 0);
}

TEST(StartHelper, DoesNotHoldTheFolderOfTheHost) {
  EXPECT_THAT(WhatIsInherited(), HasSubstr("folder /\n"));
}

TEST(StartHelper, SendsNoSignalAndLeavesNoChild) {
  ::signal(SIGCHLD, [](int) { g_signals = g_signals + 1; });
  EXPECT_THAT(WhatIsInherited(), HasSubstr("descriptors"));
  EXPECT_EQ(0, g_signals);
  EXPECT_EQ(-1, ::waitpid(-1, nullptr, __WALL | WNOHANG));
  EXPECT_EQ(ECHILD, errno);
}

TEST(StartHelper, WorksWhereChildrenAreNotWaitedFor) {
  ::signal(SIGCHLD, SIG_IGN);
  EXPECT_THAT(WhatIsInherited(), HasSubstr("descriptors"));
}

// Such a host may reap the process in between.
TEST(StartHelper, WorksBesideAThreadThatReapsEveryProcess) {
  std::thread([] {
    for (;;) ::waitpid(-1, nullptr, __WALL);
  }).detach();
  for (int i = 0; i < 50; ++i) EXPECT_THAT(WhatIsInherited(), HasSubstr("descriptors"));
}

TEST(StartHelper, LeavesNoDescriptors) {
  const auto before = CountOpenFiles();
  WhatIsInherited();
  ReadToEnd(StartHelper("/nowhere/no-such-program"));
  EXPECT_EQ(before, CountOpenFiles());
}

TEST(StartHelper, FailsWithAFullTableOfDescriptors) {
  const rlimit few = {static_cast<rlim_t>(CountOpenFiles()), 4096};
  ::setrlimit(RLIMIT_NOFILE, &few);
  for (int number = 0; number >= 0;) number = ::dup(STDERR_FILENO);
  EXPECT_EQ(-1, StartHelper(INHERITED));
}

TEST(StartHelper, EndsTheSocketWhereThereIsNoProgram) {
  const int socket = StartHelper("/nowhere/no-such-program");
  ASSERT_GE(socket, 0);
  EXPECT_EQ("", ReadToEnd(socket));
}

TEST(StartHelper, EndsTheSocketWhereTheProgramIsNone) {
  const int socket = StartHelper("/etc/passwd");
  ASSERT_GE(socket, 0);
  EXPECT_EQ("", ReadToEnd(socket));
}
