// Which tokens a draw tries, and how often.

#include "tests/support/tree.h"
#include "tests/token/background_draw.h"
#include "tests/token/token_host.h"

#include <gmock/gmock.h>
#include <p11-kit/pkcs11.h>

using testing::ElementsAre;

namespace {

class TokenSearch : public TokenHost {
 protected:
  static void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

  std::string HangUntil(const std::string& gate) const {
    return "hang function=C_GenerateRandom until=" + TreePath("mock/" + gate);
  }

  static void Open(const std::string& gate) { WriteFile(TreePath("mock/" + gate), ""); }

  void WaitForHanging(std::size_t count) const {
    ASSERT_TRUE(tokens.Hangs("C_GenerateRandom"));
    while (tokens.CountRemarks("hangs") < count) Pause();
  }

  std::size_t CountRefusedSessions() const {
    std::size_t count = 0;
    for (const MockCall& call : tokens.Log()) count += call.result == CKR_SESSION_COUNT;
    return count;
  }

  const std::function<std::string()> draw = [this] { return Draw(); };
};

class TokenFinalResults : public TokenHost, public testing::WithParamInterface<unsigned long> {};

}  // namespace

TEST_F(TokenSearch, GoesOnToAnotherTokenIfTheOneInUseFails) {
  Start({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
  tokens.Set({"slot id=0 pin=yes", "slot id=1 serial=B2"});
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ("B2", HardwareId());
}

TEST_F(TokenSearch, DoesNotRememberATokenThatFails) {
  Start({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
  for (const char* const fault : {"pin=yes", "zeros=half"}) {
    tokens.Set({std::string("slot id=1 serial=Z9 ") + fault});
    EXPECT_EQ("zeros", Draw());
    EXPECT_EQ("A1", HardwareId()) << fault;
  }
}

TEST_F(TokenSearch, EndsWithCancel) {
  const std::string second = "slot id=1 serial=B2";
  Start({"slot id=0", second});
  tokens.Set({"slot id=0", second, HangUntil("gate")});
  tokens.ClearLog();
  BackgroundDraw drawing(draw);
  WaitForHanging(1);
  rng->Cancel();
  Open("gate");
  EXPECT_EQ("zeros", drawing.Finish());
  EXPECT_THAT(tokens.OpenedSlots(), ElementsAre(0));
}

// Without the cancel, the second token would be tested, too.
TEST_F(TokenSearch, OfATestEndsWithCancel) {
  const std::string second = "slot id=1 serial=B2";
  Start({"slot id=0", second});
  tokens.Set({"slot id=0", second, HangUntil("gate")});
  tokens.ClearLog();
  BackgroundDraw testing([this] { return rng->SelfTest() ? "passed" : "failed"; });
  WaitForHanging(1);
  rng->Cancel();
  Open("gate");
  EXPECT_EQ("failed", testing.Finish());
  EXPECT_THAT(tokens.OpenedSlots(), ElementsAre(0));
}

// One session, and three draws that need it: those that wait may be refused more than once.
TEST_F(TokenSearch, WaitsForASessionAsOftenAsNeeded) {
  const std::string slot = "slot id=0 sessions=1";
  Start({slot});
  tokens.Set({slot, HangUntil("first")});
  BackgroundDraw inside(draw);
  WaitForHanging(1);
  tokens.Set({slot, HangUntil("second")});
  BackgroundDraw next(draw);
  BackgroundDraw last(draw);
  while (CountRefusedSessions() < 4) Pause();
  const std::size_t refused = CountRefusedSessions();
  Open("first");
  EXPECT_EQ("drawn", inside.Finish());
  WaitForHanging(2);
  while (CountRefusedSessions() == refused) Pause();
  Pause();
  EXPECT_FALSE(next.HasEnded() || last.HasEnded());
  Open("second");
  EXPECT_EQ("drawn", next.Finish());
  EXPECT_EQ("drawn", last.Finish());
}

// The first token was full, but is not any more when the second one has failed.
TEST_F(TokenSearch, UsesASessionThatBecomesFreeMeanwhile) {
  const std::string slot = "slot id=0 sessions=1";
  const std::string second = "slot id=1 serial=B2 pin=yes";
  Start({slot, second});
  tokens.Set({slot, second, HangUntil("first")});
  BackgroundDraw inside(draw);
  WaitForHanging(1);
  tokens.Set({slot, second, HangUntil("second")});
  BackgroundDraw searching(draw);
  WaitForHanging(2);
  tokens.Set({slot, second});
  Open("first");
  EXPECT_EQ("drawn", inside.Finish());
  Open("second");
  EXPECT_EQ("drawn", searching.Finish());
}

// Smaller pieces would not help. The token is tried as the one in use, and once more in the search.
TEST_P(TokenFinalResults, AreNotAnsweredWithSmallerPieces) {
  Start({"slot id=0"});
  tokens.Set({"slot id=0", Fault(1, "C_GenerateRandom", 1, GetParam()) + " times=1000"});
  tokens.ClearLog();
  EXPECT_EQ("zeros", Draw(256));
  EXPECT_EQ(2U, tokens.Count("C_GenerateRandom"));
}

INSTANTIATE_TEST_SUITE_P(Of, TokenFinalResults,
                         testing::Values(CKR_CANCEL, CKR_DEVICE_REMOVED, CKR_FUNCTION_CANCELED,
                                         CKR_FUNCTION_NOT_SUPPORTED, CKR_SESSION_CLOSED,
                                         CKR_SESSION_HANDLE_INVALID, CKR_TOKEN_NOT_PRESENT,
                                         CKR_TOKEN_NOT_RECOGNIZED, CKR_USER_NOT_LOGGED_IN,
                                         CKR_RANDOM_NO_RNG, CKR_CRYPTOKI_NOT_INITIALIZED));
