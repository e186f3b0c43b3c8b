#include "tests/aggregator/start_up_log.h"
#include "tests/support/all_bits.h"
#include "tests/support/tree.h"

#include <future>
#include <gmock/gmock.h>
#include <iostream>
#include <sys/time.h>

TEST(AggregatorLock, IsHeldByInitializeWhilePluginCodeRuns) {
  InstallPlugins({"dsdr", "accord"});
  const AggregatorLibrary library;
  std::future<void> stop;
  Fake("dsdr").hooks["factory"] = [&] {
    stop = std::async(std::launch::async, library.ShutDown);
    EXPECT_EQ(std::future_status::timeout, stop.wait_for(std::chrono::milliseconds(100)));
  };
  library.Initialize(nullptr);
  stop.get();
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ(Join({Probes(3), Kept("dsdr"), Probes(1), Kept("accord"), Probes(8),
                  "dsdr.Release dsdr.closed accord.Release accord.closed"}),
            CallLog());
}

TEST(AggregatorLock, IsHeldByShutDownWhilePluginCodeRuns) {
  InstallPlugins({"dsdr", "accord"});
  const AggregatorLibrary library;
  library.Start(nullptr, 2);
  std::future<void> start;
  Fake("dsdr").hooks["Release"] = [&] {
    start = std::async(std::launch::async, library.Initialize, nullptr);
    EXPECT_EQ(std::future_status::timeout, start.wait_for(std::chrono::milliseconds(100)));
  };
  ClearCallLog();
  library.ShutDown();
  start.get();
  EXPECT_TRUE(library.IsInitialized());
  EXPECT_EQ(Join({"dsdr.Release dsdr.closed accord.Release accord.closed", Probes(3), Kept("dsdr"),
                  Probes(1), Kept("accord"), Probes(8)}),
            CallLog());
}

TEST(AggregatorLock, IsTakenByTheCallsThatOnlyCount) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  std::future<void> second;
  Fake("dsdr").hooks["factory"] = [&] {
    second = std::async(std::launch::async, library.Initialize, nullptr);
    EXPECT_EQ(std::future_status::timeout, second.wait_for(std::chrono::milliseconds(100)));
  };
  library.Initialize(nullptr);
  second.get();
  library.ShutDown();
  EXPECT_TRUE(library.IsInitialized());
}

TEST(AggregatorLock, IsNotTakenByTheQueriesOfAPluginBeingStarted) {
  InstallPlugins({"dsdr", "accord"});
  FakeSettings settings;
  const AggregatorLibrary library;
  for (const char* operation : {"factory", "SetSettings", "IsAvailable"}) {
    Fake("accord").hooks[operation] = [&] {
      EXPECT_TRUE(library.IsInitialized());
      EXPECT_EQ(1, library.GetAvailableRng(nullptr, kAllBits));
      EXPECT_EQ(Fake("dsdr").provider, library.GetRng("dsdr"));
      EXPECT_EQ(nullptr, library.GetRng("accord"));
      EXPECT_EQ(1, library.IsInteractiveRng("biokbd"));
      EXPECT_NE(nullptr, library.GetDefaultSettings());
      EXPECT_TRUE(library.SetDefaultRng("sobol", nullptr));
      DefaultRngInfo info;
      EXPECT_EQ(1, library.GetDefaultRng(&info, 0));
      EXPECT_STREQ("sobol", info.type);
    };
  }
  library.Start(&settings, 2);
  EXPECT_EQ(3U, CountCalls("settings", "SetType"));
}

TEST(AggregatorLock, IsNotTakenByTheQueriesOfAPluginBeingReleased) {
  InstallPlugins({"dsdr", "accord", "sobol"});
  FakeSettings settings;
  const AggregatorLibrary library;
  library.Start(&settings, 3);
  Fake("accord").hooks["Release"] = [&] {
    EXPECT_FALSE(library.IsInitialized());
    EXPECT_EQ(2, library.GetAvailableRng(nullptr, kAllBits));  // without the one that is closed
    EXPECT_EQ(nullptr, library.GetRng("sobol"));
    EXPECT_EQ(1, library.IsInteractiveRng("biokbd"));
    EXPECT_TRUE(library.SetDefaultRng("sobol", nullptr));
    DefaultRngInfo info;
    EXPECT_EQ(0, library.GetDefaultRng(&info, 4));
  };
  library.ShutDown();
  EXPECT_EQ(1U, CountCalls("settings", "SetType"));
}

TEST(AggregatorLock, IsNotTakenByTheQueriesOfOtherThreads) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  Fake("dsdr").hooks["IsAvailable"] = [&] {
    EXPECT_TRUE(std::async(std::launch::async, library.IsInitialized).get());
  };
  library.Start(nullptr, 1);
}

// A plug-in that calls back into start-up or shut-down waits for ever, in a process of its own.
struct CallBack {
  const char* name;
  const char* operation;
  bool isStart;
};

void PrintTo(const CallBack& callBack, std::ostream* out) { *out << callBack.name; }

class AggregatorLockIsNotRecursive : public testing::TestWithParam<CallBack> {
 protected:
  // Ends the process by a signal soon after a call that does not return.
  void CallBackAndTell() const {
    constexpr itimerval kSoon = {{0, 0}, {0, 300'000}};
    ::setitimer(ITIMER_REAL, &kSoon, nullptr);
    std::cerr << "calling\n";
    GetParam().isStart ? library.Initialize(nullptr) : library.ShutDown();
    std::cerr << "returned\n";
  }

  const AggregatorLibrary library;
};

TEST_P(AggregatorLockIsNotRecursive, ACallBackNeverReturns) {
  InstallPlugin("dsdr");
  const auto startAndStop = [this] {
    Fake("dsdr").hooks[GetParam().operation] = [this] { CallBackAndTell(); };
    library.Initialize(nullptr);
    library.ShutDown();
  };
  EXPECT_EXIT(startAndStop(), testing::KilledBySignal(SIGALRM), testing::Eq("calling\n"));
}

INSTANTIATE_TEST_SUITE_P(From, AggregatorLockIsNotRecursive,
                         testing::Values(CallBack{"FactoryToInitialize", "factory", true},
                                         CallBack{"SetSettingsToShutDown", "SetSettings", false},
                                         CallBack{"IsAvailableToInitialize", "IsAvailable", true},
                                         CallBack{"ReleaseToInitialize", "Release", true},
                                         CallBack{"ReleaseToShutDown", "Release", false}),
                         [](const auto& instance) { return instance.param.name; });
