#include "tests/support/tree.h"
#include "tests/token/background_draw.h"
#include "tests/token/token_host.h"

#include <cstring>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

class TokenSelection : public TokenHost {
 protected:
  void StartWithTwo() {
    Start({"slot id=0 serial=A1 label=First", "slot id=1 serial=B2 label=Second"});
  }

  std::vector<unsigned long> SlotsOfOneDraw() {
    tokens.ClearLog();
    EXPECT_EQ("drawn", Draw());
    return tokens.OpenedSlots();
  }
};

// The serial as a token stores it, and whether it is a device.
struct Serial {
  std::string stored;
  std::string identifier;  // "": none
};

void PrintTo(const Serial& serial, std::ostream* stream) {
  *stream << testing::PrintToString(serial.stored);
}

class TokenSerials : public TokenHost, public testing::WithParamInterface<Serial> {};

}  // namespace

TEST_F(TokenSelection, SelectedTokenIsDrawnFromAlone) {
  StartWithTwo();
  ASSERT_TRUE(rng->SelectDevice("B2"));
  EXPECT_EQ("B2", HardwareId());
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(1));
  ASSERT_TRUE(rng->SelectDevice("A1"));
  EXPECT_EQ("A1", HardwareId());
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(0));
}

TEST_F(TokenSelection, RefusalKeepsTheEarlierChoice) {
  StartWithTwo();
  ASSERT_TRUE(rng->SelectDevice("B2"));
  for (const char* const serial : {"B", "B22", "b2", "C3", " B2", "A serial that is too long"}) {
    EXPECT_FALSE(rng->SelectDevice(serial)) << serial;
  }
  EXPECT_EQ("B2", HardwareId());
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(1));
}

TEST_F(TokenSelection, HardwareIdIsThatOfTheTokenInUse) {
  Start({"slot id=0 serial=A1"});
  EXPECT_EQ("A1", HardwareId());
  for (const char* const token : {"slot id=1 serial=B2", "slot id=1 serial=C3 life=2"}) {
    tokens.Set(token);
    EXPECT_EQ("drawn", Draw());
    EXPECT_THAT(token, HasSubstr("serial=" + HardwareId()));
  }
}

// The token is replaced after it was found.
TEST_F(TokenSelection, AnotherTokenIsNotDrawnFromAtTheLastMoment) {
  Start({"slot id=0"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  tokens.Set({"slot id=0", "hang function=C_OpenSession until=" + TreePath("mock/go")});
  BackgroundDraw drawing([this] { return Draw(); });
  ASSERT_TRUE(tokens.Hangs("C_OpenSession"));
  tokens.Set({"slot id=0 serial=Z9 life=2"});
  WriteFile(TreePath("mock/go"), "");
  EXPECT_EQ("zeros", drawing.Finish());
  EXPECT_THAT(tokens.Pieces(), testing::Each(32U));
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_F(TokenSelection, ForeignTokenWithTheSameSerialIsNotDrawnFromAtTheLastMoment) {
  Start({"slot id=0"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  tokens.Set({"slot id=0", "hang function=C_OpenSession until=" + TreePath("mock/go")});
  tokens.ClearLog();
  BackgroundDraw drawing([this] { return Draw(); });
  ASSERT_TRUE(tokens.Hangs("C_OpenSession"));
  tokens.Set({"slot id=0 manufacturer=Other life=2"});
  WriteFile(TreePath("mock/go"), "");
  EXPECT_EQ("zeros", drawing.Finish());
  EXPECT_THAT(tokens.Pieces(), IsEmpty());
}

TEST_F(TokenSelection, TokenWithoutAnIdentifierIsUsedWhenNoneIsSelected) {
  Start({"slot id=0 serial=", "slot id=1 serial="});
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0, rng->GetHardwareId(nullptr));
  Stop();
  Start({"slot id=0 serial=a%3Db"});
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0, rng->GetHardwareId(nullptr));
}

TEST_F(TokenSelection, TokenThatDoesNotMatchIsNoDuplicate) {
  Start({"slot id=0", "slot id=1 manufacturer=Other"});
  EXPECT_TRUE(rng->SelectDevice("A1"));
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(0));
}

// Otherwise the longer text would be written beyond the buffer that was made for the shorter one.
TEST_F(TokenSelection, SizeOfATextStaysWhenAnotherTokenIsUsedBetweenItsTwoCalls) {
  Start({"slot id=0 serial=A label=A model=A",
         "slot id=1 serial=0123456789ABCDEF "
         "label=0123456789ABCDEF0123456789ABCDEF model=0123456789ABCDEF"});
  for (const auto operation : {&IRngProvider::GetHardwareId, &IRngProvider::GetDescription}) {
    ASSERT_TRUE(rng->SelectDevice("A"));
    const std::int32_t size = (rng->*operation)(nullptr);
    EXPECT_EQ(operation == &IRngProvider::GetHardwareId ? 17 : 80, size);
    ASSERT_TRUE(rng->SelectDevice("0123456789ABCDEF"));
    std::vector<char> buffer(static_cast<std::size_t>(size) + 1, '!');
    EXPECT_EQ(size, (rng->*operation)(buffer.data()));
    EXPECT_EQ('!', buffer.back());
    EXPECT_NE(nullptr, std::memchr(buffer.data(), 0, buffer.size()));
  }
  EXPECT_EQ("0123456789ABCDEF", HardwareId());
  EXPECT_EQ("Token \"0123456789ABCDEF0123456789ABCDEF\", model 0123456789ABCDEF", Description());
}

TEST_F(TokenSelection, UninitializedTokenWithTheSameSerialDoesNotMatter) {
  Start({"slot id=0", "slot id=1 initialized=no"});
  EXPECT_TRUE(rng->SelectDevice("A1"));
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(0));
}

TEST_F(TokenSelection, NullAndEmptyMeanAnyToken) {
  StartWithTwo();
  for (const char* const any : {static_cast<const char*>(nullptr), ""}) {
    ASSERT_TRUE(rng->SelectDevice("B2"));
    EXPECT_TRUE(rng->SelectDevice(any));
    tokens.Set({"slot id=0"});
    EXPECT_EQ("drawn", Draw());
    tokens.Set({"slot id=0 serial=A1", "slot id=1 serial=B2"});
  }
}

TEST_F(TokenSelection, AnyTokenMayBeSelectedWhileThereIsNone) {
  StartWithTwo();
  ASSERT_TRUE(rng->SelectDevice("B2"));
  tokens.Set("");
  tokens.ClearLog();
  EXPECT_TRUE(rng->SelectDevice(""));
  EXPECT_THAT(tokens.Log(), IsEmpty());
  tokens.Set({"slot id=0 serial=A1 life=2"});
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(0));
}

TEST_F(TokenSelection, SelectedTokenIsNotReplacedByAnother) {
  StartWithTwo();
  ASSERT_TRUE(rng->SelectDevice("B2"));
  tokens.Set({"slot id=0 serial=A1"});
  tokens.ClearLog();
  EXPECT_EQ("zeros", Draw());
  EXPECT_THAT(tokens.OpenedSlots(), IsEmpty());
  tokens.Set({"slot id=0 serial=A1", "slot id=1 serial=B2 life=2"});
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(1));
}

TEST_F(TokenSelection, AnotherTokenInTheSlotIsNotTaken) {
  Start({"slot id=0 serial=A1"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  EXPECT_EQ("drawn", Draw());
  tokens.Set({"slot id=0 serial=Z9 life=2"});
  EXPECT_EQ("zeros", Draw());
}

TEST_F(TokenSelection, TokenThatWasInsertedLaterCanBeSelected) {
  Start({"slot id=0"});
  EXPECT_FALSE(rng->SelectDevice("B2"));
  tokens.Set({"slot id=0", "slot id=1 serial=B2"});
  EXPECT_TRUE(rng->SelectDevice("B2"));
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(1));
}

TEST_F(TokenSelection, TokenThatCannotDrawIsNotSelected) {
  Start({"slot id=0", "slot id=1 serial=B2 rng=no", "slot id=2 serial=C3 manufacturer=Other"});
  EXPECT_FALSE(rng->SelectDevice("B2"));
  EXPECT_FALSE(rng->SelectDevice("C3"));
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(0));
}

TEST_F(TokenSelection, DescriptionNamesLabelAndModel) {
  Start({"slot id=0 label=My%20token model=Model%207"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  EXPECT_THAT(Description(), HasSubstr("My token"));
  EXPECT_THAT(Description(), HasSubstr("Model 7"));
}

TEST_F(TokenSelection, DescriptionIsOneLineOfText) {
  Start({"slot id=0 label=" + Encoded("a\nb\tc\x1b[31m\x7f\xff\xc3\xa4") +
             " model=" + Encoded("M\n1"),
         "slot id=1 serial=B2"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  const std::string text = Description();
  for (const char byte : text) {
    EXPECT_TRUE(static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7f)
        << testing::PrintToString(text);
  }
  EXPECT_THAT(text, Not(HasSubstr("\xff")));
  EXPECT_THAT(text, HasSubstr("\xc3\xa4"));
}

// The separators of lines and paragraphs, and what turns the order of the text that follows.
TEST_F(TokenSelection, DescriptionDoesNotBreakOrTurnTheLine) {
  Start({"slot id=0 label=" + Encoded("a\u2028b\u2029c\u202ed\u2066e\u200ff")});
  EXPECT_THAT(Description(), HasSubstr("\"a?b?c?d?e?f\""));
}

TEST_F(TokenSelection, TwoTokensWithOneSerialAreRefused) {
  Start({"slot id=0", "slot id=1", "slot id=2 serial=C3"});
  EXPECT_FALSE(rng->SelectDevice("A1"));
  EXPECT_TRUE(rng->SelectDevice("C3"));
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(2));
}

// The one in use is known. If it is removed, it is unknown which of the others was selected.
TEST_F(TokenSelection, DuplicateOfTheSelectedTokenIsNotDrawnFrom) {
  Start({"slot id=0"});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  tokens.Set({"slot id=0", "slot id=1"});
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(0));
  tokens.Set({"slot id=1", "slot id=2"});
  EXPECT_EQ("zeros", Draw());
  tokens.Set({"slot id=2"});
  EXPECT_THAT(SlotsOfOneDraw(), ElementsAre(2));
}

TEST_P(TokenSerials, AreIdentifiersIfTheyCanBeStored) {
  Start({"slot id=0 serial=" + Encoded(GetParam().stored), "slot id=1 serial=Other"});
  if (GetParam().identifier.empty()) {
    EXPECT_FALSE(rng->SelectDevice(GetParam().stored.c_str()) && !GetParam().stored.empty());
    EXPECT_THAT(Report(), Not(HasSubstr("device\t" + GetParam().stored + "\t")));
    return;
  }
  EXPECT_THAT(Report(), HasSubstr("device\t" + GetParam().identifier + "\t"));
  ASSERT_TRUE(rng->SelectDevice(GetParam().identifier.c_str()));
  EXPECT_EQ(GetParam().identifier, HardwareId());
  EXPECT_EQ("drawn", Draw());
}

INSTANTIATE_TEST_SUITE_P(Of, TokenSerials,
                         testing::Values(Serial{"0123456789abcdef", "0123456789abcdef"},
                                         Serial{"1", "1"}, Serial{"12   ", "12"},
                                         Serial{"a b", "a b"}, Serial{"", ""}, Serial{"   ", ""},
                                         Serial{"a=b", ""}, Serial{"a\nb", ""}, Serial{"a\tb", ""},
                                         Serial{"\x01", ""}, Serial{"a\u202eb", ""}));
