#include "tests/token/token_host.h"

namespace {

class TokenRemoval : public TokenHost {};

}  // namespace

TEST_F(TokenRemoval, InTheMiddleOfADrawFailsIt) {
  Start({"slot id=0"});
  for (int life = 1; life <= 5; ++life) {
    const std::string again = " life=" + std::to_string(life);
    tokens.Set({"slot id=0 bytes=" + std::to_string(life * 700) + again});
    EXPECT_EQ("zeros", Draw(4096));
    EXPECT_EQ("zeros", Draw());
    tokens.Set({"slot id=0" + again + "0"});
    EXPECT_EQ("drawn", Draw(4096));
    EXPECT_EQ(0U, tokens.OpenSessions());
  }
}

// The next token is broken, and must not pass with what the removed one has left in the buffer.
TEST_F(TokenRemoval, LeavesNoBytesToTheNextToken) {
  Start({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
  tokens.Set({"slot id=0 bytes=767 life=2", "slot id=1 serial=B2 leaves=half"});
  EXPECT_EQ("zeros", Draw(768));
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_F(TokenRemoval, OfTheReaderFailsTheDraw) {
  Start({"slot id=0"});
  tokens.Set("");
  EXPECT_EQ("zeros", Draw());
  tokens.Set({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
}

TEST_F(TokenRemoval, ReportedByEveryCallFailsTheDrawOnly) {
  Start({"slot id=0"});
  tokens.Set({"slot id=0", "fault number=1 function=* call=1 times=1000000 result=0x32"});
  EXPECT_EQ("zeros", Draw());
  EXPECT_FALSE(rng->SelectDevice("A1"));
  rng->GetHardwareId(nullptr);
  rng->GetDescription(nullptr);
  tokens.Set({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
}

TEST_F(TokenRemoval, AtTheEndLeavesNothing) {
  Start({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
  tokens.Set("");
  Stop();
  EXPECT_EQ(0U, tokens.OpenSessions());
  EXPECT_FALSE(IsMapped("libmock_module.so"));
}
