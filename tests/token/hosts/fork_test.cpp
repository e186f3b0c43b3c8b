#include "tests/support/process.h"
#include "tests/support/tree.h"
#include "tests/token/background_draw.h"
#include "tests/token/token_host.h"

#include <algorithm>
#include <thread>
#include <unistd.h>

namespace {

class TokenFork : public TokenHost {
 protected:
  // In a copy of the process; false if a step fails.
  bool DrawsAndStops(int draws) {
    for (int i = 0; i < draws; ++i) {
      if (Draw(600) != "drawn") return false;
    }
    library->ShutDown();
    return !IsMapped("librngrutoken.so");  // in a copy, p11-kit keeps the module mapped
  }

  std::size_t CountOf(const std::string& function, bool inThisProcess) const {
    std::size_t count = 0;
    for (const MockCall& call : tokens.Log()) {
      count += call.function == function && call.result == 0 &&
               (call.process == ::getpid()) == inThisProcess;
    }
    return count;
  }
};

}  // namespace

TEST_F(TokenFork, CopyDrawsAndStopsOnItsOwn) {
  Start({"slot id=0"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0, RunForked([this] { return DrawsAndStops(3) ? 0 : 1; }).status);
  EXPECT_LE(1U, CountOf("C_Initialize", false));
  EXPECT_EQ(CountOf("C_Initialize", false), CountOf("C_Finalize", false));
  EXPECT_EQ("drawn", Draw());
  Stop();
  EXPECT_EQ(CountOf("C_Initialize", true), CountOf("C_Finalize", true));
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_F(TokenFork, CopyKeepsTheSelection) {
  Start({"slot id=0", "slot id=1 serial=B2"});
  ASSERT_TRUE(rng->SelectDevice("B2"));
  tokens.ClearLog();
  EXPECT_EQ(0, RunForked([this] { return DrawsAndStops(1) ? 0 : 1; }).status);
  EXPECT_EQ(std::vector{1UL}, tokens.OpenedSlots());
}

TEST_F(TokenFork, CopyReportsTheSelectionBeforeItsFirstDraw) {
  Start({"slot id=0", "slot id=1 serial=B2"});
  ASSERT_TRUE(rng->SelectDevice("B2"));
  EXPECT_EQ(0, RunForked([this] { return HardwareId() == "B2" ? 0 : 1; }).status);
}

TEST_F(TokenFork, CopyNamesNoTokenBeforeItsFirstDraw) {
  Start({"slot id=0"});
  EXPECT_EQ(0, RunForked([this] {
                 EXPECT_EQ("PKCS#11 token", Description());
                 return HasFailure() ? 1 : 0;
               }).status);
}

// A module without locks is called directly, so p11-kit does not notice the fork either.
TEST_F(TokenFork, CopyInitializesForAReport) {
  Start({"module locks=no forks=unnoticed", "slot id=0"});
  tokens.ClearLog();
  EXPECT_EQ(0, RunForked([this] { return Report().empty() ? 1 : 0; }).status);
  ASSERT_FALSE(tokens.Log().empty());
  EXPECT_EQ("C_Initialize", tokens.Log().front().function);
}

TEST_F(TokenFork, CopyDoesNotFinalizeWhatTheOriginalInitialized) {
  Start({"module locks=no forks=unnoticed", "slot id=0"});
  tokens.ClearLog();
  EXPECT_EQ(0, RunForked([this] { return DrawsAndStops(0) ? 0 : 1; }).status);
  EXPECT_EQ(0U, tokens.Count("C_Finalize"));
}

TEST_F(TokenFork, CopyStopsWhileADrawOfTheOriginalWaits) {
  Start({"module locks=no", "slot id=0"});
  tokens.Set({"module locks=no", "slot id=0",
              "hang function=C_GenerateRandom until=" + TreePath("mock/go")});
  BackgroundDraw inside([this] { return Draw(); });
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  BackgroundDraw waiting([this] { return Draw(); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(0, RunForked([this] { return DrawsAndStops(0) ? 0 : 1; }).status);
  WriteFile(TreePath("mock/go"), "");
  EXPECT_EQ("drawn", inside.Finish());
  EXPECT_EQ("drawn", waiting.Finish());
}

// It would draw the same bytes as the original, or disturb it.
TEST_F(TokenFork, CopyAlsoInitializesAModuleThatDoesNotNoticeTheFork) {
  Start({"module forks=unnoticed", "slot id=0"});
  EXPECT_EQ(0, RunForked([this] { return DrawsAndStops(1) ? 0 : 1; }).status);
  const auto calls = tokens.Log();
  const auto first = std::find_if(calls.begin(), calls.end(),
                                  [](const MockCall& call) { return call.process != ::getpid(); });
  ASSERT_NE(calls.end(), first);
  EXPECT_EQ("C_Initialize", first->function);
}

TEST_F(TokenFork, CopyThatOnlyStopsDoesNotAffectTheOriginal) {
  Start({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0, RunForked([this] { return DrawsAndStops(0) ? 0 : 1; }).status);
  EXPECT_EQ("drawn", Draw());
}

TEST_F(TokenFork, CopyDrawsWhileTheOriginalIsInTheModule) {
  Start({"slot id=0"});
  tokens.Set({"slot id=0", "hang function=C_GenerateRandom until=" + TreePath("mock/go")});
  std::string result;
  std::thread draw([&] { result = Draw(4096); });
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  tokens.Set({"slot id=0"});
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(0, RunForked([this] { return DrawsAndStops(2) ? 0 : 1; }).status);
  }
  WriteFile(TreePath("mock/go"), "");
  draw.join();
  EXPECT_EQ("drawn", result);
}

TEST_F(TokenFork, CopyStartsOnItsOwnAfterAFork) {
  tokens.Set({"slot id=0"});
  EXPECT_EQ(0, RunForked([this] {
                 return IsAvailable({"slot id=0"}) && DrawsAndStops(1) ? 0 : 1;
               }).status);
  Start({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
}
