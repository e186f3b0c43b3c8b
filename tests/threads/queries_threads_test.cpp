// Queries between a start and its stop, from eight threads. Nothing that they call here takes a
// lock: neither the plug-ins nor the settings order the threads, so no race of the library is hidden.

#include "tests/support/aggregator_library.h"
#include "tests/support/all_bits.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"
#include "tests/threads/released_together.h"

#include <array>
#include <atomic>
#include <cstring>
#include <gmock/gmock.h>

using testing::AnyOf;
using testing::StrEq;

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 200;

const std::vector<std::string> kKinds = KindNames();

// Settings that may be used from any thread: each value is one of three fixed texts.
class SharedSettings final : public IRngSettings {
 public:
  const char* GetType() override { return Load(type); }
  bool SetType(const char* text) override { return Store(type, text); }
  const char* GetHardwareId() override { return Load(hardwareId); }
  bool SetHardwareId(const char* text) override { return Store(hardwareId, text); }
  const char* GetDsdrFilePath() override { return "/nowhere/dsdr.bin"; }

 private:
  using Value = std::atomic<std::size_t>;
  static constexpr std::array<const char*, 3> kTexts = {"dsdr", "sobol", "device 7"};

  static const char* Load(const Value& value) {
    return kTexts[value.load(std::memory_order_relaxed)];
  }
  static bool Store(Value& value, const char* text) {
    for (std::size_t i = 0; i < kTexts.size(); ++i) {
      if (std::strcmp(kTexts[i], text) != 0) continue;
      value.store(i, std::memory_order_relaxed);
      return true;
    }
    return false;
  }

  Value type = 0;
  Value hardwareId = 2;
};

class QueriesFromEightThreads : public testing::Test {
 protected:
  QueriesFromEightThreads() {
    InstallAllPlugins("stub");
    InstallX11("whole");
  }

  SharedSettings settings;
  const AggregatorLibrary library;
};

}  // namespace

TEST_F(QueriesFromEightThreads, SeeTheSameProviders) {
  library.Start(&settings, kKinds.size());
  std::vector<IRngProvider*> expected;
  for (const std::string& kind : kKinds) expected.push_back(library.GetRng(kind.c_str()));
  RunTogether(kThreads, [&](int) {
    for (int round = 0; round < kRounds; ++round) {
      EXPECT_TRUE(library.IsInitialized());
      EXPECT_EQ(12, library.GetAvailableRng(nullptr, kAllBits));
      std::vector<IRngProvider*> listed(12);
      EXPECT_EQ(12, library.GetAvailableRng(listed.data(), kAllBits));
      EXPECT_EQ(expected, listed);
      for (std::size_t i = 0; i < kKinds.size(); ++i) {
        EXPECT_EQ(expected[i], library.GetRng(kKinds[i].c_str()));
      }
      EXPECT_EQ(nullptr, library.GetRng("bio"));
    }
  });
  library.ShutDown();
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kAllBits));
}

TEST_F(QueriesFromEightThreads, TellTheInteractiveKindsAndTheBuiltInSettings) {
  library.Start(&settings, kKinds.size());
  IRngSettings* const builtIn = library.GetDefaultSettings();
  RunTogether(kThreads, [&](int) {
    for (int round = 0; round < kRounds; ++round) {
      EXPECT_EQ(1, library.IsInteractiveRng("biokbd"));
      EXPECT_EQ(0, library.IsInteractiveRng("unixdev"));
      EXPECT_EQ(builtIn, library.GetDefaultSettings());
    }
  });
  library.ShutDown();
}

TEST_F(QueriesFromEightThreads, FallBackToTheSameKind) {
  library.Start(nullptr, kKinds.size());
  RunTogether(kThreads, [&](int) {
    for (int round = 0; round < kRounds; ++round) {
      DefaultRngInfo info;
      EXPECT_EQ(1, library.GetDefaultRng(&info, 0xF));
      EXPECT_STREQ("bioqt", info.type);
      EXPECT_FALSE(library.SetDefaultRng("sobol", nullptr));
    }
  });
  library.ShutDown();
}

TEST_F(QueriesFromEightThreads, ReadAndStoreTheDefaultThroughSettingsForThreads) {
  library.Start(&settings, kKinds.size());
  RunTogether(kThreads, [&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      // The two texts may come from two calls.
      EXPECT_TRUE(
          library.SetDefaultRng(thread % 2 ? "dsdr" : "sobol", round % 2 ? "device 7" : "sobol"));
      DefaultRngInfo info;
      EXPECT_EQ(1, library.GetDefaultRng(&info, 0));
      EXPECT_THAT(info.type, AnyOf(StrEq("dsdr"), StrEq("sobol")));
      EXPECT_THAT(info.hardwareId, AnyOf(StrEq("device 7"), StrEq("sobol")));
    }
  });
  library.ShutDown();
}

TEST_F(QueriesFromEightThreads, AreNotDisturbedByNestedStartsAndStops) {
  library.Start(&settings, kKinds.size());
  RunTogether(kThreads, [&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      if (thread < 2) library.Initialize(nullptr);
      EXPECT_TRUE(library.IsInitialized());
      EXPECT_EQ(12, library.GetAvailableRng(nullptr, kAllBits));
      EXPECT_NE(nullptr, library.GetRng("biocore"));
      if (thread < 2) library.ShutDown();
    }
  });
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
}
