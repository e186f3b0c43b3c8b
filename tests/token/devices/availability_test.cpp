#include "tests/support/open_files.h"
#include "tests/token/token_host.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class TokenAvailability : public TokenHost {};

}  // namespace

TEST_F(TokenAvailability, OneTokenIsEnough) {
  EXPECT_TRUE(IsAvailable({"slot id=0"}));
  EXPECT_EQ(kRngCapabilityHardware | kRngCapabilityMayBlock, rng->GetFlags());
  EXPECT_TRUE(rng->SelfTest());
  EXPECT_EQ("Rutoken", ReportedName(*rng));
}

TEST_F(TokenAvailability, NeedsAToken) {
  EXPECT_FALSE(IsAvailable({"slot id=0 present=no"}));
  EXPECT_FALSE(IsMapped("librngrutoken.so"));
  EXPECT_FALSE(IsMapped("libmock_module.so"));
  EXPECT_EQ(tokens.Count("C_Initialize"), tokens.Count("C_Finalize"));
}

TEST_F(TokenAvailability, NeedsASlot) { EXPECT_FALSE(IsAvailable({})); }

TEST_F(TokenAvailability, NeedsAGenerator) {
  EXPECT_FALSE(IsAvailable({"slot id=0 rng=no"}));
  EXPECT_THAT(tokens.OpenedSlots(), IsEmpty());
}

TEST_F(TokenAvailability, TokenThatRequiresAPinIsNotAvailable) {
  EXPECT_FALSE(IsAvailable({"slot id=0 pin=yes"}));
  EXPECT_EQ(0U, tokens.Count("C_Login"));
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_F(TokenAvailability, TokenThatFailsIsNotAvailable) {
  EXPECT_FALSE(IsAvailable(
      {"slot id=0", "fault number=1 function=C_GenerateRandom call=1 times=99 result=0x30"}));
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_F(TokenAvailability, TokenThatReturnsHalfZerosIsNotAvailable) {
  EXPECT_FALSE(IsAvailable({"slot id=0 zeros=half"}));
}

TEST_F(TokenAvailability, GoodTokenIsUsedInsteadOfOneWhoseBytesAreNotRandom) {
  for (const std::string fault : {"zeros=half", "same=yes"}) {
    Start({"slot id=0 serial=A1 " + fault, "slot id=1 serial=B2"});
    EXPECT_EQ("B2", HardwareId());
    EXPECT_EQ("drawn", Draw());
    EXPECT_FALSE(rng->SelectDevice("A1"));
    EXPECT_EQ("drawn", Draw());
    Stop();
  }
}

TEST_F(TokenAvailability, SelectedTokenIsNotReplacedByAGoodOne) {
  Start({"slot id=0 serial=A1", "slot id=1 serial=B2"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  tokens.Set({"slot id=0 serial=A1 zeros=half", "slot id=1 serial=B2"});
  EXPECT_FALSE(rng->IsAvailable());
  EXPECT_EQ("A1", HardwareId());
}

TEST_F(TokenAvailability, TokenThatRepeatsItselfIsNotAvailable) {
  EXPECT_FALSE(IsAvailable({"slot id=0 same=yes"}));
}

TEST_F(TokenAvailability, UninitializedOrUnknownTokenIsNotAvailable) {
  EXPECT_FALSE(IsAvailable({"slot id=0 initialized=no", "slot id=1 known=no"}));
}

TEST_F(TokenAvailability, WriteProtectedTokenIsAvailable) {
  EXPECT_TRUE(IsAvailable({"slot id=0 protected=yes"}));
  EXPECT_EQ("drawn", Draw());
}

TEST_F(TokenAvailability, OneOfManyIsEnough) {
  EXPECT_TRUE(IsAvailable({"slot id=0 present=no", "slot id=1 serial=B rng=no",
                           "slot id=2 serial=C known=no", "slot id=3 serial=D",
                           "slot id=4 serial=E manufacturer=Other"}));
  EXPECT_EQ("drawn", Draw());
  EXPECT_THAT(tokens.OpenedSlots(), ElementsAre(3));
}

TEST_F(TokenAvailability, SlotThatAppearsBetweenTheCallsIsFound) {
  EXPECT_TRUE(IsAvailable({"module hides=1", "slot id=0", "slot id=1 serial=B2"}));
  EXPECT_EQ("drawn", Draw());
  EXPECT_TRUE(rng->SelectDevice("B2"));
}

// A token was taken out between the calls, or the module is broken.
TEST_F(TokenAvailability, SlotsThatAreReportedButNotListedAreNone) {
  for (const char* const number : {"1", "5000", "1000000000000000000"}) {
    EXPECT_TRUE(IsAvailable({std::string("module extra=") + number, "slot id=0"})) << number;
    Stop();
  }
}

TEST_F(TokenAvailability, EmptySlotsAreNotAsked) {
  EXPECT_TRUE(IsAvailable({"slot id=0", "slot id=1 present=no"}));
  for (const MockCall& call : tokens.Log()) EXPECT_NE(1U, call.slot) << call.function;
}

TEST_F(TokenAvailability, TokenIsUsedAgainAfterItWasTakenOut) {
  Start({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
  tokens.Set({"slot id=0 present=no"});
  EXPECT_EQ("zeros", Draw());
  EXPECT_FALSE(rng->SelfTest());
  tokens.Set({"slot id=0 life=2"});
  EXPECT_EQ("drawn", Draw());
  EXPECT_TRUE(rng->SelfTest());
}

TEST_F(TokenAvailability, TokenIsFoundInAnotherSlot) {
  Start({"slot id=0"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  EXPECT_EQ("drawn", Draw());
  tokens.Set({"slot id=5"});
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ("A1", HardwareId());
}

TEST_F(TokenAvailability, NewStartFindsWhatWasInsertedMeanwhile) {
  EXPECT_FALSE(IsAvailable({}));
  Stop();
  EXPECT_TRUE(IsAvailable({"slot id=0"}));
  Stop();
  EXPECT_FALSE(IsAvailable({}));
}
