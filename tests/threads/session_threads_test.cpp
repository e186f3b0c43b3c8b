// One session for eight threads. Neither the plug-ins nor the checks take a lock, so no race of the session is hidden.

#include "tests/session/linked_library.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"
#include "tests/threads/released_together.h"

#include <gtest/gtest.h>
#include <set>

#include <rngaggregator/session.h>

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 50;

}  // namespace

TEST(SessionInEightThreads, FindsDrawsAndEnds) {
  InstallAllPlugins("stub");
  InstallX11("whole");
  std::set<CheckedRng*> checks[kThreads];
  {
    const rng::Session session(nullptr);
    RunTogether(kThreads, [&](int thread) {
      const rng::Session copy = session;
      for (int round = 0; round < kRounds; ++round) {
        for (const std::string& kind : KindNames()) {
          const rng::Generator generator = copy.Find(kind);
          checks[thread].insert(&generator.Provider());
          rng::Engine engine(generator);
          EXPECT_NE(engine(), engine());
        }
      }
    });
    EXPECT_TRUE(IsInitialized());
  }
  EXPECT_EQ(0, g_unmatchedStarts);
  EXPECT_EQ(KindNames().size(), checks[0].size());
  for (const auto& others : checks) EXPECT_EQ(checks[0], others);
}

TEST(SessionInEightThreads, EachStartsAndStopsItsOwn) {
  InstallAllPlugins("stub");
  RunTogether(kThreads, [](int) {
    for (int round = 0; round < kRounds; ++round) {
      rng::Session session(nullptr);
      EXPECT_EQ(16U, session.Find("dsdr").Bytes<16>().size());
      EXPECT_TRUE(session.Stop());
    }
  });
  EXPECT_EQ(0, g_unmatchedStarts);
}
