#include "tools/rngctl/terminal/text.h"

#include <gtest/gtest.h>

TEST(TerminalText, ControlCharactersAreReplaced) {
  EXPECT_EQ("a?b??c", Printable("a\nb\033\177c"));
  EXPECT_EQ("?\xC2\xA0", Printable("\xC2\x9B\xC2\xA0"));  // of U+009B and U+00A0
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
