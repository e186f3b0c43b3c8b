#include "tests/token/token_host.h"

#include <atomic>
#include <gmock/gmock.h>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

using testing::ElementsAre;
using testing::Ge;
using testing::Pair;

namespace {

class TokenThreads : public TokenHost {
 protected:
  using Outcomes = std::map<std::string, int>;

  // Draws in eight threads, at least `draws` times in each, while the tokens change `changes` times. Returns how often
  // each outcome was seen.
  Outcomes DrawInThreads(int draws, int changes = 0, const std::function<void(int)>& change = {}) {
    std::atomic<bool> isOver = false;
    Outcomes outcomes;
    std::mutex lock;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&] {
        for (int draw = 0; draw < draws || !isOver; ++draw) {
          const std::string outcome = Draw(600);
          const std::lock_guard<std::mutex> guard(lock);
          ++outcomes[outcome];
        }
      });
    }
    for (int i = 1; i <= changes; ++i) {
      change(i);
      std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    isOver = true;
    for (std::thread& thread : threads) thread.join();
    return outcomes;
  }

  void Change(int number) {
    const std::string life = " life=" + std::to_string(number);
    if (number % 3 == 0) tokens.Set("");
    if (number % 3 == 1) tokens.Set({"slot id=0" + life, "slot id=1 serial=B2" + life});
    if (number % 3 == 2) tokens.Set({"slot id=2 bytes=5000" + life});
    rng->GetHardwareId(nullptr);
    rng->GetDescription(nullptr);
    if (number % 5 == 0) rng->SelectDevice("B2");
    if (number % 5 == 1) rng->SelectDevice("");
  }
};

}  // namespace

TEST_F(TokenThreads, DrawAtOnce) {
  Start({"slot id=0"});
  EXPECT_THAT(DrawInThreads(20), ElementsAre(Pair("drawn", Ge(160))));
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_F(TokenThreads, DrawWhileTokensComeAndGo) {
  Start({"slot id=0"});
  Outcomes outcomes = DrawInThreads(20, 60, [this](int number) { Change(number); });
  EXPECT_LT(0, outcomes["drawn"]);
  EXPECT_LT(0, outcomes["zeros"]);
  EXPECT_EQ(2U, outcomes.size());
  tokens.Set({"slot id=0"});
  EXPECT_TRUE(rng->SelectDevice(""));
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_F(TokenThreads, TakeTurnsInAModuleThatIsNotThreadSafe) {
  Start({"module locks=no micros=200", "slot id=0"});
  EXPECT_THAT(DrawInThreads(10), ElementsAre(Pair("drawn", Ge(80))));
  EXPECT_EQ(0U, tokens.CountRemarks("overlaps"));
}

TEST_F(TokenThreads, DrawFromATokenWithFewSessions) {
  Start({"slot id=0 sessions=2"});
  EXPECT_THAT(DrawInThreads(10), ElementsAre(Pair("drawn", Ge(80))));
}
