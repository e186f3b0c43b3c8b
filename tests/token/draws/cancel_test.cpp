#include "tests/support/tree.h"
#include "tests/token/background_draw.h"
#include "tests/token/token_host.h"

#include <chrono>
#include <p11-kit/pkcs11.h>

namespace {

// Draws while the module hangs.
class TokenCancel : public TokenHost {
 protected:
  void SetHanging(const std::string& module, const std::string& slot = "slot id=0") {
    tokens.Set({module, slot, "hang function=C_GenerateRandom until=" + release});
  }

  void Release() const { WriteFile(release, ""); }

  static void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

  // One draw is inside the module. Another one begins, waits, and is cancelled.
  void ExpectCancelToEndAWaitingDraw(BackgroundDraw& inside) {
    tokens.ClearLog();
    BackgroundDraw waiting(draw);
    while (tokens.Log().empty()) Pause();
    Pause();
    EXPECT_FALSE(waiting.HasEnded());
    rng->Cancel();
    EXPECT_EQ("zeros", waiting.Finish());
    EXPECT_FALSE(inside.HasEnded());
    Release();
    EXPECT_EQ("zeros", inside.Finish());
    tokens.Set({"slot id=0"});
    EXPECT_EQ("drawn", Draw());
    EXPECT_EQ(0U, tokens.OpenSessions());
  }

  const std::string release = TreePath("mock/go");
  const std::function<std::string()> draw = [this] { return Draw(); };
};

}  // namespace

TEST_F(TokenCancel, EndsTheDrawInsideTheModuleWhenThatReturns) {
  Start({"slot id=0"});
  SetHanging("module");
  BackgroundDraw inside(draw);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  rng->Cancel();  // returns although the module does not
  EXPECT_FALSE(inside.HasEnded());
  Release();
  EXPECT_EQ("zeros", inside.Finish());
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0U, tokens.OpenSessions());
}

// The module is not thread-safe, so the other draws wait.
TEST_F(TokenCancel, EndsWaitingDrawsAtOnce) {
  Start({"module locks=no", "slot id=0"});
  SetHanging("module locks=no");
  BackgroundDraw inside(draw);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  BackgroundDraw first(draw);
  BackgroundDraw second(draw);
  while (!(first.HasEnded() && second.HasEnded())) {
    rng->Cancel();  // again: a draw that begins after it is not ended
    Pause();
  }
  EXPECT_FALSE(inside.HasEnded());
  Release();
  for (BackgroundDraw* const ended : {&inside, &first, &second})
    EXPECT_EQ("zeros", ended->Finish());
  EXPECT_EQ("drawn", Draw());
}

TEST_F(TokenCancel, EndsADrawThatWaitsForASession) {
  Start({"slot id=0 sessions=1"});
  SetHanging("module", "slot id=0 sessions=1");
  BackgroundDraw inside(draw);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  tokens.Set({"slot id=0 sessions=1"});
  ExpectCancelToEndAWaitingDraw(inside);
}

// It must initialize the module again, and waits until nobody uses that.
TEST_F(TokenCancel, EndsADrawThatWaitsToInitialize) {
  Start({"slot id=0"});
  SetHanging("module");
  BackgroundDraw inside(draw);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  tokens.Set({"slot id=0", Fault(1, "*", 1, CKR_CRYPTOKI_NOT_INITIALIZED) + " times=2"});
  ExpectCancelToEndAWaitingDraw(inside);
  EXPECT_EQ(0U, tokens.Count("C_Initialize"));
}

TEST_F(TokenCancel, DoesNotAffectLaterDraws) {
  Start({"slot id=0"});
  for (int i = 0; i < 3; ++i) rng->Cancel();
  EXPECT_EQ("drawn", Draw());
}

TEST_F(TokenCancel, EndsADrawOfManyPieces) {
  Start({"slot id=0"});
  tokens.Set({"module micros=2000", "slot id=0"});
  BackgroundDraw drawing([this] { return Draw(1 << 20); });
  while (tokens.Pieces().size() < 5) Pause();
  rng->Cancel();
  EXPECT_EQ("zeros", drawing.Finish());
  EXPECT_GT(1000U, tokens.Pieces().size());  // of 4096
}

TEST_F(TokenCancel, QueriesDoNotWaitForADraw) {
  Start({"slot id=0"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  SetHanging("module");
  BackgroundDraw inside(draw);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  EXPECT_EQ("Rutoken", ReportedName(*rng));
  EXPECT_EQ(kRngCapabilityHardware, rng->GetFlags() & kRngCapabilityHardware);
  EXPECT_EQ("A1", HardwareId());
  EXPECT_NE("", Description());
  EXPECT_EQ(rng, library->GetRng("Rutoken"));
  EXPECT_FALSE(inside.HasEnded());
  Release();
  EXPECT_EQ("drawn", inside.Finish());
}

// The first token is full, and the second one gives nothing: the draw waits for the first.
TEST_F(TokenCancel, DrawWaitsForASessionWithoutIt) {
  const std::string second = "slot id=1 serial=B2 pin=yes";
  Start({"slot id=0 sessions=1", second});
  SetHanging("module", "slot id=0 sessions=1");
  BackgroundDraw inside(draw);
  ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
  tokens.Set({"slot id=0 sessions=1", second});
  tokens.ClearLog();
  BackgroundDraw waiting(draw);
  while (tokens.Log().empty()) Pause();
  Pause();
  EXPECT_FALSE(waiting.HasEnded());
  Release();
  EXPECT_EQ("drawn", inside.Finish());
  EXPECT_EQ("drawn", waiting.Finish());
}
