#include "tests/token/token_host.h"

#include <atomic>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace {

class TokenThreads : public TokenHost {
 protected:
  using Outcomes = std::map<std::string, int>;

  // Eight threads, each with so many draws, while `meanwhile` runs again and again. Returns how often each
  // outcome was seen.
  Outcomes DrawInThreads(int draws, const std::function<void()>& meanwhile) {
    Outcomes outcomes;
    std::mutex lock;
    std::atomic<int> running = 8;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&] {
        for (int draw = 0; draw < draws; ++draw) {
          const std::string outcome = Draw(600);
          const std::lock_guard<std::mutex> guard(lock);
          ++outcomes[outcome];
        }
        --running;
      });
    }
    while (running > 0) meanwhile();
    for (std::thread& thread : threads) thread.join();
    return outcomes;
  }

  static void Wait() { std::this_thread::sleep_for(std::chrono::milliseconds(2)); }
};

}  // namespace

TEST_F(TokenThreads, DrawAtOnce) {
  Start({"slot id=0"});
  EXPECT_EQ((Outcomes{{"drawn", 160}}), DrawInThreads(20, Wait));
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_F(TokenThreads, DrawWhileTokensComeAndGo) {
  Start({"slot id=0"});
  int change = 0;
  Outcomes outcomes = DrawInThreads(40, [&] {
    const std::string life = " life=" + std::to_string(++change);
    if (change % 3 == 0) tokens.Set("");
    if (change % 3 == 1) tokens.Set({"slot id=0" + life, "slot id=1 serial=B2" + life});
    if (change % 3 == 2) tokens.Set({"slot id=2 bytes=5000" + life});
    rng->GetHardwareId(nullptr);
    rng->GetDescription(nullptr);
    rng->SelectDevice(change % 2 ? "B2" : "");
    Wait();
  });
  EXPECT_EQ(320, outcomes["drawn"] + outcomes["zeros"]);
  EXPECT_LT(0, outcomes["drawn"]);
  tokens.Set({"slot id=0 life=0"});
  EXPECT_TRUE(rng->SelectDevice(""));
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_F(TokenThreads, WaitForAModuleThatTakesOneThread) {
  Start({"module locks=no micros=200", "slot id=0"});
  EXPECT_EQ((Outcomes{{"drawn", 80}}), DrawInThreads(10, Wait));
  EXPECT_EQ(0U, tokens.CountRemarks("overlaps"));
}

TEST_F(TokenThreads, DrawFromATokenWithFewSessions) {
  Start({"slot id=0 sessions=2"});
  EXPECT_EQ((Outcomes{{"drawn", 80}}), DrawInThreads(10, Wait));
}
