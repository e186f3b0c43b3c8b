#include "tests/support/tree.h"
#include "tests/token/token_host.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <p11-kit/pkcs11.h>
#include <thread>

namespace {

// Draws while the module hangs.
class TokenCancel : public TokenHost {
 protected:
  struct Drawing {
    std::atomic<bool> hasEnded = false;
    std::string result;
    std::thread thread;
  };

  void SetHanging(const std::string& module) {
    tokens.Set({module, "slot id=0", "hang function=C_GenerateRandom until=" + release});
  }

  void Begin(Drawing& drawing) {
    drawing.thread = std::thread([this, &drawing] {
      drawing.result = Draw();
      drawing.hasEnded = true;
    });
  }

  static void WaitFor(const Drawing& drawing) {
    while (!drawing.hasEnded) Pause();
  }

  static void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

  void ExpectCancelToEndAWaitingDraw(Drawing& inside) {
    tokens.ClearLog();
    Drawing waiting;
    Begin(waiting);
    while (tokens.Log().empty()) Pause();
    Pause();
    EXPECT_FALSE(waiting.hasEnded);
    rng->Cancel();
    waiting.thread.join();
    EXPECT_EQ("zeros", waiting.result);
    EXPECT_FALSE(inside.hasEnded);
    WriteFile(release, "");
    inside.thread.join();
    EXPECT_EQ("zeros", inside.result);
    tokens.Set({"slot id=0"});
    EXPECT_EQ("drawn", Draw());
    EXPECT_EQ(0U, tokens.OpenSessions());
  }

  const std::string release = TreePath("mock/go");
};

}  // namespace

TEST_F(TokenCancel, EndsTheOneInsideWhenTheModuleReturns) {
  Start({"slot id=0"});
  SetHanging("module");
  Drawing inside;
  Begin(inside);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  rng->Cancel();  // returns although the module does not
  EXPECT_FALSE(inside.hasEnded);
  WriteFile(release, "");
  inside.thread.join();
  EXPECT_EQ("zeros", inside.result);
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0U, tokens.OpenSessions());
}

// A module that takes one thread: the others wait for it.
TEST_F(TokenCancel, EndsThoseThatWaitAtOnce) {
  Start({"module locks=no", "slot id=0"});
  SetHanging("module locks=no");
  Drawing inside;
  Begin(inside);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  Drawing waiting[3];
  for (Drawing& drawing : waiting) Begin(drawing);
  while (!(waiting[0].hasEnded && waiting[1].hasEnded && waiting[2].hasEnded)) {
    rng->Cancel();  // again: a draw that begins after it is not ended
    Pause();
  }
  EXPECT_FALSE(inside.hasEnded);
  WriteFile(release, "");
  inside.thread.join();
  EXPECT_EQ("zeros", inside.result);
  for (Drawing& drawing : waiting) {
    drawing.thread.join();
    EXPECT_EQ("zeros", drawing.result);
  }
  EXPECT_EQ("drawn", Draw());
}

// Its only session is in use.
TEST_F(TokenCancel, EndsTheOneThatWaitsForASession) {
  Start({"slot id=0 sessions=1"});
  tokens.Set({"slot id=0 sessions=1", "hang function=C_GenerateRandom until=" + release});
  Drawing inside;
  Begin(inside);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  tokens.Set({"slot id=0 sessions=1"});
  ExpectCancelToEndAWaitingDraw(inside);
}

// It must initialize the module again, and waits until nobody uses that.
TEST_F(TokenCancel, EndsTheOneThatWaitsToInitialize) {
  Start({"slot id=0"});
  SetHanging("module");
  Drawing inside;
  Begin(inside);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  tokens.Set({"slot id=0", Fault(1, "*", 1, CKR_CRYPTOKI_NOT_INITIALIZED) + " times=2"});
  ExpectCancelToEndAWaitingDraw(inside);
}

TEST_F(TokenCancel, DoesNotAffectLaterDraws) {
  Start({"slot id=0"});
  for (int i = 0; i < 3; ++i) rng->Cancel();
  EXPECT_EQ("drawn", Draw());
}

TEST_F(TokenCancel, EndsADrawOfManyPieces) {
  Start({"slot id=0"});
  tokens.Set({"module micros=2000", "slot id=0"});
  Drawing drawing;
  drawing.thread = std::thread([this, &drawing] { drawing.result = Draw(1 << 20); });
  while (tokens.Pieces().size() < 5) Pause();
  rng->Cancel();
  drawing.thread.join();
  EXPECT_EQ("zeros", drawing.result);
  EXPECT_GT(1000U, tokens.Pieces().size());  // of 4096
}

// Queries answer while the module hangs.
TEST_F(TokenCancel, QueriesDoNotWaitForADraw) {
  Start({"slot id=0"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  SetHanging("module");
  Drawing inside;
  Begin(inside);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  EXPECT_EQ("Rutoken", ReportedName(*rng));
  EXPECT_EQ(kRngCapabilityHardware, rng->GetFlags() & kRngCapabilityHardware);
  EXPECT_EQ(rng, library->GetRng("Rutoken"));
  EXPECT_FALSE(inside.hasEnded);
  WriteFile(release, "");
  inside.thread.join();
  EXPECT_EQ("drawn", inside.result);
}
