// What the plug-ins that ask a user have in common, with a helper that does what it is told.

#include "plugins/interactive/interactive_rng.h"

#include "tests/interactive/host_process.h"
#include "tests/support/tree.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

char g_helper[] = "scripted_helper";
bool g_canAsk = true;
std::string g_problem;
std::function<void()> g_whenAsked = [] {};
std::function<void()> g_whenHungUp = [] {};

bool CanAsk() {
  g_whenAsked();
  return g_canAsk;
}

std::string FindProblem() { return g_problem; }

class Interactive : public testing::Test {
 protected:
  static void Script(const std::string& task) {
    ::setenv("LANG", task.c_str(), 1);
    ::setenv("HOME", TreePath("").c_str(), 1);
  }

  // "drawn", or "zeros" if the draw fails and the buffer has nothing of it.
  std::string Draw() {
    std::string bytes(32, 'x');
    if (rng.Generate(bytes.data(), bytes.size())) {
      return bytes == std::string(32, 'r') ? "drawn" : "drawn " + bytes;
    }
    return bytes == std::string(32, '\0') ? "zeros" : "mixed";
  }

  static bool HasTidied() { return std::filesystem::exists(TreePath("tidied")); }

  InteractiveRng rng;
};

void DoNothing(int) {}

}  // namespace

// Replaces the system's function.
extern "C" int shutdown(int socket, int direction) noexcept {
  const long result = ::syscall(SYS_shutdown, socket, direction);
  if (direction == SHUT_WR) g_whenHungUp();
  return static_cast<int>(result);
}

extern const InteractiveKind kKind = {"biokbd", "keys", g_helper, "nobody", CanAsk, FindProblem};

TEST_F(Interactive, TextsHaveTheirSizes) {
  EXPECT_EQ(7, rng.GetName(nullptr));
  char name[] = "~~~~~~~~";
  EXPECT_EQ(7, rng.GetName(name));
  EXPECT_EQ(std::string("biokbd\0~", 8), std::string(name, 8));
  EXPECT_EQ(5, rng.GetDescription(nullptr));
}

TEST_F(Interactive, GivesTheBytesOfTheHelper) {
  Script("sends");
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ("drawn", Draw());
}

TEST_F(Interactive, WritesNothingPastTheBuffer) {
  Script("sends too much");
  char bytes[33] = {};
  EXPECT_TRUE(rng.Generate(bytes, 32));
  EXPECT_EQ(std::string(32, 'r'), bytes);
}

TEST_F(Interactive, AsksNobodyForNothing) {
  g_canAsk = false;
  EXPECT_TRUE(rng.Generate(nullptr, 0));
}

TEST_F(Interactive, StartsNoHelperWhereNobodyCanBeAskedAnyMore) {
  Script("waits for the hang-up");
  g_canAsk = false;
  EXPECT_EQ("zeros", Draw());
  ::usleep(300'000);
  EXPECT_FALSE(HasTidied());
}

TEST_F(Interactive, KeepsNothingOfHalfADraw) {
  Script("sends a half");
  EXPECT_EQ("zeros", Draw());
}

// A helper that cannot be executed ends before or after it is asked.
TEST_F(Interactive, SurvivesAHelperThatIsNoProgram) {
  g_helper[0] = '0';
  const std::string helper = FindHelper();
  WriteFile(helper, "no program");
  std::filesystem::permissions(helper, std::filesystem::perms(0755));
  EXPECT_TRUE(rng.IsAvailable());
  for (int i = 0; i < 100; ++i) EXPECT_EQ("zeros", Draw());
  std::filesystem::remove(helper);
}

TEST_F(Interactive, IsNotAvailableIfItsHelperIsADirectory) {
  g_helper[0] = '.';
  g_helper[1] = '\0';
  EXPECT_FALSE(rng.IsAvailable());
  EXPECT_EQ("zeros", Draw());
}

TEST_F(Interactive, SelfTestPassesWithOneAnswerAlone) {
  Script("passes");
  EXPECT_TRUE(rng.SelfTest());
  rng.Cancel();  // is for draws
  EXPECT_TRUE(rng.SelfTest());
  Script("sends another answer");
  EXPECT_FALSE(rng.SelfTest());
  Script("nothing");
  EXPECT_FALSE(rng.SelfTest());
}

TEST_F(Interactive, SelfTestNeedsNobodyToAsk) {
  g_canAsk = false;
  Script("passes");
  EXPECT_TRUE(rng.SelfTest());
}

TEST_F(Interactive, IsNotDisturbedBySignalsOfTheHost) {
  struct sigaction action = {};
  action.sa_handler = DoNothing;
  ::sigaction(SIGALRM, &action, nullptr);
  const itimerval often = {{0, 10'000}, {0, 10'000}};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  Script("sends late");
  EXPECT_EQ("drawn", Draw());
}

// It comes before there is a socket.
TEST_F(Interactive, CancelCountsFromTheBeginningOfADraw) {
  Script("tidies up slowly");
  rng.Cancel();
  g_whenAsked = [this] { rng.Cancel(); };
  EXPECT_EQ("zeros", Draw());
  EXPECT_TRUE(HasTidied());
  g_whenAsked = [] {};
  Script("sends");
  EXPECT_EQ("drawn", Draw());
}

TEST_F(Interactive, BytesThatComeAfterACancelAreNotGiven) {
  Script("sends when it is cancelled");
  std::thread draw([this] { EXPECT_EQ("zeros", Draw()); });
  ::usleep(200'000);
  rng.Cancel();
  draw.join();
}

// Otherwise the cancel would use a descriptor that is closed, or that of another draw.
TEST_F(Interactive, ADrawKeepsItsSocketWhileACancelUsesIt) {
  Script("sends when it is cancelled");
  std::atomic<bool> hasEnded = false;
  g_whenHungUp = [&] {
    ::usleep(200'000);
    EXPECT_FALSE(hasEnded);
  };
  std::thread draw([&] {
    EXPECT_EQ("zeros", Draw());
    hasEnded = true;
  });
  ::usleep(200'000);
  rng.Cancel();
  draw.join();
}

TEST_F(Interactive, ACancelledDrawDoesNotWaitForTheRestOfItsBytes) {
  Script("trickles");
  std::thread draw([this] {
    EXPECT_EQ("zeros", Draw());
    EXPECT_FALSE(HasTidied());
  });
  ::usleep(200'000);
  rng.Cancel();
  draw.join();
}

TEST_F(Interactive, WaitsUntilACancelledHelperHasTidiedUp) {
  Script("tidies up slowly");
  std::thread draw([this] {
    EXPECT_EQ("zeros", Draw());
    EXPECT_TRUE(HasTidied());
  });
  ::usleep(200'000);
  rng.Cancel();
  draw.join();
}

// A copy of the host has the socket open then.
TEST_F(Interactive, HangsUpEvenIfAForkedCopyHasTheSocket) {
  Script("waits for the hang-up");
  std::thread draw([this] { EXPECT_EQ("zeros", Draw()); });
  ::usleep(200'000);
  const pid_t copy = ::fork();
  if (copy == 0) {
    for (;;) ::pause();
  }
  rng.Cancel();
  draw.join();
  EXPECT_TRUE(WaitUntil(HasTidied));
  EXPECT_EQ(0, ::waitpid(copy, nullptr, WNOHANG));
  ::kill(copy, SIGKILL);
  ::waitpid(copy, nullptr, 0);
}

// The first draw is still held up by its helper.
TEST_F(Interactive, CancelEndsThoseThatWaitAtOnce) {
  Script("waits for the hang-up");
  std::atomic<bool> hasEnded = false;
  std::thread first([&] {
    EXPECT_EQ("zeros", Draw());
    hasEnded = true;
  });
  ::usleep(200'000);
  std::thread second([&] {
    EXPECT_EQ("zeros", Draw());
    EXPECT_FALSE(hasEnded);
  });
  ::usleep(100'000);
  rng.Cancel();
  second.join();
  // The turn is still that of the first.
  Script("sends");
  EXPECT_EQ("drawn", Draw());
  EXPECT_TRUE(hasEnded);
  first.join();
}

TEST_F(Interactive, ReportIsTheOneThatWasMeasured) {
  EXPECT_EQ(0, GetRngReport(nullptr));
  g_problem = "one";
  EXPECT_EQ(13, GetRngReport(nullptr));
  g_problem = "another";
  char report[64] = {};
  EXPECT_EQ(13, GetRngReport(report));
  EXPECT_STREQ("problem\tone\n", report);
}
