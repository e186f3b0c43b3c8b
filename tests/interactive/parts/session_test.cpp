// The helper's end of the connection with its plug-in, in a process that is both.

#include "helpers/session/session.h"

#include "helpers/gathering/self_test.h"
#include "helpers/session/run_helper.h"
#include "tests/support/open_files.h"
#include "tests/support/refused_call.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

class SessionTest : public testing::Test {
 protected:
  SessionTest() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return;
    plugin = ::fcntl(ends[0], F_DUPFD_CLOEXEC, 10);
    ::close(ends[0]);
    ::dup2(ends[1], kHelperSocket);
    if (ends[1] != kHelperSocket) ::close(ends[1]);
  }
  ~SessionTest() override { ::close(plugin); }

  void Ask(std::uint32_t task, std::uint64_t size = 32) const {
    const HelperRequest request = {static_cast<HelperRequest::Task>(task), 0, size};
    ::send(plugin, &request, sizeof request, 0);
  }

  // Until the helper has closed its end.
  std::string Answer() const {
    ::close(kHelperSocket);
    std::string bytes(1 << 20, '\0');
    const ssize_t count = ::recv(plugin, bytes.data(), bytes.size(), MSG_WAITALL);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }

  HmacDrbg Generator() const { return HmacDrbg(std::string(32, 'e'), "nonce"); }

  int plugin = -1;
};

// From /proc/self/status, in kilobytes.
long LockedMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmLck:", 0) == 0) return std::stol(line.substr(6));
  }
  return -1;
}

void Tell(int pipe, char byte) {
  if (::write(pipe, &byte, 1) != 1) std::abort();
}

// 0 at the end of the file.
char Hear(int pipe) {
  char byte = 0;
  return ::read(pipe, &byte, 1) == 1 ? byte : '\0';
}

int g_draws = 0;
void CountDraw(const Session&) { ++g_draws; }

bool g_passes = true;

}  // namespace

// Instead of the one that helpers are linked with.
bool TestGathering() { return g_passes; }

TEST_F(SessionTest, ProtectsItsMemoryFromOthers) {
  Ask(HelperRequest::kDraw);
  const Session session;
  EXPECT_EQ(0, ::prctl(PR_GET_DUMPABLE));
}

TEST_F(SessionTest, WaitsForTheWholeRequest) {
  const HelperRequest request = {HelperRequest::kDraw, 0, 77};
  ::send(plugin, &request, 5, 0);
  std::thread rest([&] {
    ::usleep(100'000);
    ::send(plugin, reinterpret_cast<const char*>(&request) + 5, sizeof request - 5, 0);
  });
  EXPECT_EQ(77U, Session().Request().size);
  rest.join();
}

TEST_F(SessionTest, NeedsAWholeRequest) {
  ::send(plugin, "half", 4, 0);
  ::shutdown(plugin, SHUT_WR);
  EXPECT_THROW(Session(), std::runtime_error);
}

TEST_F(SessionTest, EndsWithTheSocket) {
  Ask(HelperRequest::kDraw);
  const Session session;
  EXPECT_FALSE(session.HasEnded());
  ::shutdown(plugin, SHUT_WR);
  EXPECT_TRUE(session.HasEnded());
}

TEST_F(SessionTest, LeavesNoDescriptors) {
  const auto before = CountOpenFiles();
  Ask(HelperRequest::kDraw);
  { const Session session; }
  EXPECT_EQ(before, CountOpenFiles());
}

// The name of a program may look like the state that follows it.
TEST_F(SessionTest, KnowsAStoppedHostWhateverItsName) {
  Ask(HelperRequest::kDraw);
  const Session session;
  ::prctl(PR_SET_NAME, "a) T");
  EXPECT_FALSE(session.IsHostStopped());
}

TEST_F(SessionTest, AnswersWithTheBytesThatAreAskedFor) {
  Ask(HelperRequest::kDraw, 5000);
  {
    const Session session;
    EXPECT_TRUE(session.Answer(Generator()));
  }
  std::string expected(5000, 'x');
  HmacDrbg generator = Generator();
  generator.Generate(expected.data(), 4096);
  generator.Generate(expected.data() + 4096, 904);
  EXPECT_TRUE(expected == Answer());
}

// The signal arrives while the session waits for room in the socket.
TEST_F(SessionTest, GoesOnAnsweringAfterASignal) {
  constexpr std::size_t kSize = 1 << 20;
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  ::sigaction(SIGUSR1, &action, nullptr);
  Ask(HelperRequest::kDraw, kSize);
  std::string bytes(kSize, '\0');
  std::thread reader([&, answering = ::pthread_self()] {
    for (int waiting = 0; waiting < 100'000; ::ioctl(plugin, FIONREAD, &waiting)) ::usleep(10'000);
    for (int i = 0; i < 3; ++i) {
      ::pthread_kill(answering, SIGUSR1);
      ::usleep(10'000);
    }
    EXPECT_EQ(static_cast<ssize_t>(kSize), ::recv(plugin, bytes.data(), kSize, MSG_WAITALL));
  });
  EXPECT_TRUE(Session().Answer(Generator()));
  ::shutdown(kHelperSocket, SHUT_WR);
  reader.join();
  std::string expected(kSize, '\0');
  HmacDrbg generator = Generator();
  for (std::size_t place = 0; place < kSize; place += 4096)
    generator.Generate(&expected[place], 4096);
  EXPECT_TRUE(expected == bytes);
}

TEST_F(SessionTest, StopsAnsweringAPluginThatIsGone) {
  Ask(HelperRequest::kDraw, std::uint64_t{1} << 60);
  const Session session;
  ::close(plugin);
  EXPECT_FALSE(session.Answer(Generator()));
}

TEST_F(SessionTest, AnswersASelfTestWithoutADraw) {
  Ask(HelperRequest::kSelfTest);
  AnswerPlugin(CountDraw);
  EXPECT_EQ(0, g_draws);
  EXPECT_EQ(std::string(1, static_cast<char>(kHelperPassed)), Answer());
}

TEST_F(SessionTest, DoesNotAnswerASelfTestThatFails) {
  g_passes = false;
  Ask(HelperRequest::kSelfTest);
  AnswerPlugin(CountDraw);
  EXPECT_EQ("", Answer());
}

TEST_F(SessionTest, AnswersADrawOnce) {
  Ask(HelperRequest::kDraw);
  AnswerPlugin(CountDraw);
  EXPECT_EQ(1, g_draws);
  EXPECT_EQ("", Answer());
}

TEST_F(SessionTest, AnswersNothingToWhatItDoesNotKnow) {
  Ask(3);
  AnswerPlugin(CountDraw);
  EXPECT_EQ(0, g_draws);
  EXPECT_EQ("", Answer());
}

// Whoever has a copy of the socket, as a program that a toolkit has started may, does not keep the plug-in waiting.
TEST_F(SessionTest, ExitEndsTheConnection) {
  Ask(HelperRequest::kDraw);
  const pid_t helper = ::fork();
  if (helper == 0) {
    const Session session;
    Session::Exit(3);
  }
  int status = 0;
  ::waitpid(helper, &status, 0);
  EXPECT_EQ(3, WEXITSTATUS(status));
  char byte = 0;
  EXPECT_EQ(0, ::recv(plugin, &byte, 1, MSG_DONTWAIT));
}

TEST(SystemBytes, SayThatTheSystemFailed) {
  ASSERT_TRUE(RefuseCall(SYS_getrandom, ENOSYS, 2, 0));
  try {
    DrawSystemBytes();
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ("The system's random-number generator failed.", error.what());
  }
}

TEST(SystemBytes, AreAllOfTheSystem) {
  const auto drawTail = [] {
    const SystemBytes bytes = DrawSystemBytes();
    return std::string(bytes.end() - 8, bytes.end());
  };
  drawTail();  // leaves what the next one would find there
  const std::string one = drawTail();
  const std::string other = drawTail();
  EXPECT_NE(one, other);
}

TEST(SystemBytes, DifferAndAreNotSwapped) {
  EXPECT_NE(DrawSystemBytes(), DrawSystemBytes());
  if (::mlockall(MCL_CURRENT) != 0) GTEST_SKIP() << "this user may not lock so much memory";
  ::munlockall();
  DrawSystemBytes();
  const long locked = LockedMemory();
  EXPECT_LT(0, locked);
  // What is mapped later is not locked, because the process may have reached its limit.
  constexpr std::size_t kMapped = 1 << 20;
  EXPECT_NE(MAP_FAILED, ::mmap(nullptr, kMapped, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  EXPECT_EQ(locked, LockedMemory());
}

namespace {

// A process in between is the host. The helper has both ends of the socket, so only the death of the host ends
// the session.
class HostOfAHelper : public testing::Test {
 protected:
  HostOfAHelper() {
    if (::pipe2(results, O_CLOEXEC) != 0 || ::pipe2(starts, O_CLOEXEC) != 0) std::abort();
  }

  // What the helper says: 'r' when it runs, 's' for a session, then what `ask` returns: 'y' or 'n'. 'e' for an exception.
  std::string Run(bool diesFirst, const std::function<bool(const Session&)>& ask) {
    const pid_t host = ::fork();
    if (host == 0) Host(ask);
    ::close(results[1]);
    std::string text(1, Hear(results[0]));
    if (!diesFirst) {
      Tell(starts[1], 's');
      text += Hear(results[0]);
    }
    ::kill(host, SIGKILL);
    siginfo_t death = {};
    // In a session, nobody takes its status yet, as with a host whose parent is busy.
    ::waitid(P_PID, static_cast<id_t>(host), &death, diesFirst ? WEXITED : WEXITED | WNOWAIT);
    Tell(starts[1], 's');
    while (const char byte = Hear(results[0])) text += byte;
    ::waitpid(host, nullptr, 0);
    return text;
  }

 private:
  [[noreturn]] void Host(const std::function<bool(const Session&)>& ask) const {
    ::close(starts[1]);  // so that the helper does not wait for a test that has ended
    int ends[2];
    ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends);
    const HelperRequest request = {HelperRequest::kDraw, 0, 32};
    ::send(ends[0], &request, sizeof request, 0);
    if (::fork() == 0) {
      const int result = ::fcntl(results[1], F_DUPFD, 20);
      const int start = ::fcntl(starts[0], F_DUPFD, 20);
      ::fcntl(ends[0], F_DUPFD, 20);
      ::dup2(ends[1], kHelperSocket);
      Help(result, start, ask);
    }
    ::close(results[1]);
    for (;;) ::pause();
  }

  [[noreturn]] static void Help(int result, int start,
                                const std::function<bool(const Session&)>& ask) {
    Tell(result, 'r');
    Hear(start);
    try {
      const Session session;
      Tell(result, 's');
      Hear(start);
      Tell(result, ask(session) ? 'y' : 'n');
    } catch (const std::runtime_error&) {
      Tell(result, 'e');
    }
    ::_exit(0);
  }

  int results[2];
  int starts[2];
};

}  // namespace

TEST_F(HostOfAHelper, EndsTheSessionWhenItDies) {
  EXPECT_EQ("rsy", Run(false, [](const Session& session) { return session.HasEnded(); }));
}

TEST_F(HostOfAHelper, EndsTheHelperWhenItDies) {
  EXPECT_EQ("rs", Run(false, [](const Session& session) {
              session.ExitAtEnd();
              ::sleep(5);
              return false;
            }));
}

TEST_F(HostOfAHelper, MayBeDeadBeforeTheHelperLooks) {
  EXPECT_EQ("re", Run(true, [](const Session&) { return true; }));
}
