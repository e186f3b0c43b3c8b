#include "tools/rngctl/terminal/text.h"

#include <cstring>
#include <gtest/gtest.h>

TEST(TerminalText, ControlCharactersAreReplaced) {
  EXPECT_EQ("a?b??c", Printable("a\nb\033\177c"));
  EXPECT_EQ("?", Printable(std::string(1, '\0')));
  EXPECT_EQ("?\xC2\xA0", Printable("\xC2\x9B\xC2\xA0"));  // of U+009B and U+00A0
}

TEST(TerminalText, QuotesAreNotDoubled) {
  EXPECT_EQ("\"a\"", Quoted("a"));
  EXPECT_EQ("\"a\"", Quoted("\"a\""));
  EXPECT_EQ("\"\"", Quoted(""));
  EXPECT_EQ("\"\"\"", Quoted("\""));
  EXPECT_EQ("\"\"a\"", Quoted("\"a"));
}

TEST(TerminalText, BytesThatAreNotUtf8AreReplaced) {
  const std::string replaced = "\xEF\xBF\xBD";
  EXPECT_EQ("a" + replaced + "31m" + replaced, Printable("a\x9B"
                                                         "31m\xFF"));  // CSI in 8 bits
  EXPECT_EQ(replaced, Printable("\xC3"));
  EXPECT_EQ(replaced + replaced, Printable("\xE2\x82"));
  EXPECT_EQ(replaced + replaced, Printable("\xC0\x80"));  // an overlong NUL
  EXPECT_EQ("\xE2\x82\xAC \xF0\x9F\x8E\xB2", Printable("\xE2\x82\xAC \xF0\x9F\x8E\xB2"));
}

TEST(TerminalText, NoSurrogateAndNothingBeyondTheLastCharacterIsUtf8) {
  for (const char* text :
       {"\xED\xA0\x80", "\xED\xB0\x80", "\xE0\x80\xAF", "\xF4\x90\x80\x80", "\xF0\x80\x80\xAF"}) {
    EXPECT_FALSE(IsPlain(text));
    std::string replaced;
    for (std::size_t i = 0; i < std::strlen(text); ++i) replaced += "\xEF\xBF\xBD";
    EXPECT_EQ(replaced, Printable(text));
  }
  EXPECT_EQ("\xED\x9F\xBF \xF4\x8F\xBF\xBF", Printable("\xED\x9F\xBF \xF4\x8F\xBF\xBF"));
}

TEST(TerminalText, CharactersThatAreInvisibleOrChangeTheDirectionAreReplaced) {
  EXPECT_EQ("a?b?", Printable("a\xE2\x80\xAE"  // U+202E, right-to-left override
                              "b\xE2\x81\xA6"));
  EXPECT_EQ("????", Printable("\xE2\x80\x8B\xE2\x80\xA8\xEF\xBB\xBF\xF3\xA0\x81\x81"));
  // The Hebrew letter alef, and the joiner that emoji need.
  EXPECT_EQ("\xD7\x90 \xE2\x80\x8D", Printable("\xD7\x90 \xE2\x80\x8D"));
  EXPECT_TRUE(IsPlain("\xE2\x80\xAE"));
}

TEST(TerminalText, LinesStayLines) { EXPECT_EQ("a?b\nc\n", PrintableLines("a\033b\n\nc")); }

TEST(TerminalText, JsonKeepsItsMeaningInEscapes) {
  EXPECT_EQ("{\n\"\\u007f\\u009b\\u202e\xC3\xA4\"}",
            EscapedJson("{\n\"\x7F\xC2\x9B\xE2\x80\xAE\xC3\xA4\"}"));
  EXPECT_EQ("\\udb40\\udc41 \xF0\x9F\x8E\xB2", EscapedJson("\xF3\xA0\x81\x81 \xF0\x9F\x8E\xB2"));
}

TEST(TerminalText, ColumnsAreCharacters) {
  EXPECT_EQ(2U, CountColumns("\xC3\xA4x"));
  EXPECT_EQ("\xC3\xA4 |", Padded("\xC3\xA4", 2) + "|");
  EXPECT_EQ("long", Padded("long", 2));
}

TEST(TerminalText, OneThingIsCountedInTheSingular) {
  EXPECT_EQ("0 checks", Counted(0, "check"));
  EXPECT_EQ("1 check", Counted(1, "check"));
  EXPECT_EQ("2 checks", Counted(2, "check"));
}
