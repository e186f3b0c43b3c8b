#include "tests/aggregator/start_up_log.h"
#include "tests/support/all_bits.h"
#include "tests/support/tree.h"
#include "tests/threads/released_together.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {

constexpr int kThreads = 16;

// From its opening to its closing.
constexpr char kWholeLog[] = "opened factory SetSettings IsAvailable Release closed";

class SixteenThreads : public testing::Test {
 protected:
  SixteenThreads() { InstallPlugins({"dsdr", "accord", "biocore"}); }

  void ExpectLog(const char* log) const {
    for (const char* kind : {"dsdr", "accord", "biocore"}) EXPECT_EQ(log, CallLog(kind)) << kind;
  }

  const AggregatorLibrary library;
};

}  // namespace

TEST_F(SixteenThreads, StartingTogetherLoadOnceAndStoppingTogetherReleaseOnce) {
  std::vector<FakeSettings> settings(kThreads);
  Fake("dsdr").hooks["factory"] = [] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  };
  RunTogether(kThreads, [&](int thread) {
    library.Initialize(&settings[static_cast<std::size_t>(thread)]);
    // Whichever thread loads, none comes out before the last plug-in is loaded.
    EXPECT_EQ(1U, CountCalls("biocore", "IsAvailable"));
  });
  EXPECT_TRUE(library.IsInitialized());
  EXPECT_EQ(12U, ProbesMade());
  ExpectLog("opened factory SetSettings IsAvailable");
  EXPECT_EQ(3, library.GetAvailableRng(nullptr, kAllBits));
  // All of them got the same caller's settings.
  EXPECT_EQ(Fake("dsdr").settings, Fake("accord").settings);
  EXPECT_EQ(Fake("dsdr").settings, Fake("biocore").settings);
  EXPECT_NE(nullptr, Fake("dsdr").settings);

  ClearCallLog();
  RunTogether(kThreads, [&](int) { library.ShutDown(); });
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
  ExpectLog("Release closed");
}

TEST_F(SixteenThreads, NestingInsideAStartNeitherLoadNorRelease) {
  library.Start(nullptr, 3);
  ClearCallLog();
  RunTogether(kThreads, [&](int) {
    for (int round = 0; round < 100; ++round) {
      library.Initialize(nullptr);
      library.Initialize(nullptr);
      library.ShutDown();
      library.ShutDown();
    }
  });
  EXPECT_TRUE(library.IsInitialized());
  EXPECT_EQ("", CallLog());
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
  ExpectLog("Release closed");
}

TEST_F(SixteenThreads, PairingStartsWithStopsReleaseWhateverTheyLoad) {
  RunTogether(kThreads, [&](int) {
    for (int round = 0; round < 10; ++round) {
      library.Initialize(nullptr);
      library.ShutDown();
    }
  });
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
  const std::size_t starts = ProbesMade() / 12;
  EXPECT_LE(1U, starts);
  for (const char* kind : {"dsdr", "accord", "biocore"}) {
    std::vector<std::string> lives(starts, kWholeLog);
    EXPECT_EQ(Join(lives), CallLog(kind)) << kind;
  }
  library.Start(nullptr, 3);
}

TEST_F(SixteenThreads, StoppingTooOftenLeaveADebtOfSixteen) {
  RunTogether(kThreads, [&](int) { library.ShutDown(); });
  EXPECT_FALSE(library.IsInitialized());
  RunTogether(kThreads, [&](int) { library.Initialize(nullptr); });
  EXPECT_FALSE(library.IsInitialized());
  ExpectLog("");
  library.Start(nullptr, 3);
}
