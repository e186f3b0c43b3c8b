#include "tools/rngctl/terminal/text.h"

#include <gtest/gtest.h>

TEST(TerminalText, ControlCharactersAreReplaced) {
  EXPECT_EQ("a?b??c", Printable("a\nb\033\177c"));
  EXPECT_EQ("?\xC2\xA0", Printable("\xC2\x9B\xC2\xA0"));  // of U+009B and U+00A0
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
