#include "plugins/token/turns.h"

#include <gtest/gtest.h>

// It may have held the session that was missing.
TEST(TokenTurns, TurnThatEndedJustBeforeTheWaitEndsIt) {
  Turns turns(false);
  Turn mine(turns, turns.Cancels());
  { const Turn other(turns, turns.Cancels()); }
  EXPECT_TRUE(mine.WaitForAnother());
  EXPECT_TRUE(mine.IsMine());
}

// Otherwise it would wait for itself.
TEST(TokenTurns, ATurnThatHasWaitedCountsOnce) {
  Turns turns(false);
  Turn mine(turns, turns.Cancels());
  { const Turn other(turns, turns.Cancels()); }
  ASSERT_TRUE(mine.WaitForAnother());
  EXPECT_TRUE(mine.RunExclusively([] {}));
}

TEST(TokenTurns, NobodyWaitsForATurnThatEndedBeforeTheirOwn) {
  Turns turns(false);
  { const Turn other(turns, turns.Cancels()); }
  Turn mine(turns, turns.Cancels());
  EXPECT_FALSE(mine.WaitForAnother());
  EXPECT_TRUE(mine.IsMine());
}
